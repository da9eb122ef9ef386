#include "StratacutUI/IMF_AudioMetadataDialogTest.h"

#include "IMF_AudioMetadataDialog.h"

#include <QJsonDocument>
#include <QVBoxLayout>

IMF_AudioMetadataDialogTest::IMF_AudioMetadataDialogTest(QWidget* parent) : QWidget(parent)
{
    const QJsonDocument metadata = QJsonDocument::fromJson("{\"ContentKind\": \"HI\",\"Language\" : \"bo\",}");
    auto* dialog = new IMF_AudioMetadataDialog(QStringLiteral("Dummy Track Name"), metadata.object(), this,
                                               IMF_AudioMetadataDialog::Contents::AtOnce);
    dialog->setWindowFlags({});
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(dialog);
}

IMF_AudioMetadataDialogTest::~IMF_AudioMetadataDialogTest() = default;
