#include "IMFAudioGroupSaveAsDialog.h"

#include "AudioGroups.h"

#include "NvCore/NvText.h"
#include "ViewDeckQt/DecorationManager.h"
#include "ViewDeckQt/ManagedMessageBox.h"
#include "ViewDeckQt/QFFLineEditQt.h"
#include "ViewDeckQt/StyledButton.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

using ViewDeckQt::StyledButton;
using ViewDeckQt::ManagedMessageBox::messageBox;

namespace
{
constexpr int nameWidth = 280;
}

IMFAudioGroupSaveAsDialog::IMFAudioGroupSaveAsDialog(QWidget* parent, const QString& suggestedName,
                                                     const QStringList& existingNames)
    : ViewDeckQt::ManagedDialog<QDialog>(parent),
      m_existingNames(existingNames),
      m_reservedNames(AudioGroups::reservedNames()),
      m_name(new ViewDeckQt::QFFLineEditQt(suggestedName))
{
    setManagedTitle(stx_func("Group Name"));
    setAutoFillBackground(true);
    m_name->setObjectName(QStringLiteral("GroupName"));
    m_name->setMinimumWidth(nameWidth);
    setFocusProxy(m_name);
    auto* label = new QLabel(stx_func("Save As:"));
    label->setBuddy(m_name);
    m_name->setAccessibleName(stx_func("Group Name"));
    auto* ok = new StyledButton(stx_func("Ok"));
    ok->setObjectName(QStringLiteral("OK"));
    ok->setDefault(true);
    auto* cancel = new StyledButton(stx_func("Cancel"));
    cancel->setObjectName(QStringLiteral("Cancel"));

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(m_name);
    layout->addLayout(buttons);
    ViewDeckQt::DecorationManager::decorate(this);

    connect(ok, &QPushButton::clicked, this, &IMFAudioGroupSaveAsDialog::onOk);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_name, &QLineEdit::textChanged, ok,
            [ok](const QString& text) { ok->setEnabled(!text.trimmed().isEmpty()); });
    m_name->selectAll();
    m_name->setFocus();
}

QString IMFAudioGroupSaveAsDialog::name() const
{
    return m_name->text();
}

bool IMFAudioGroupSaveAsDialog::mayReplace()
{
    return messageBox(this, QMessageBox::Question, {}, stx_func("Replace existing \"%1\"?").toQString().arg(name()),
                      QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::NoButton) == QMessageBox::Ok;
}

void IMFAudioGroupSaveAsDialog::onOk()
{
    if (m_reservedNames.contains(name())) {
        messageBox(this, QMessageBox::Information, {},
                   stx_func("\"%1\" cannot be used as profile name").toQString().arg(name()), QMessageBox::Ok,
                   QMessageBox::Ok);
        return;
    }
    const QPointer<IMFAudioGroupSaveAsDialog> alive(this);
    if ((!m_existingNames.contains(name()) || mayReplace()) && alive)
        accept();
}
