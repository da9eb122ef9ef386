#include "desk/app/window/RecogniserDialog.h"

#include "ViewDeckQt/PaletteManager.h"
#include "ViewDeckQt/StyledButton.h"
#include "desk/app/window/PaneParts.h"
#include "desk/services/TranscriptSettings.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace desk::app
{

namespace
{
constexpr int dialogWidth = 560;
}

RecogniserDialog::RecogniserDialog(const speech::RecogniserSettings& settings, QWidget* parent)
    : ManagedDialog(parent),
      m_settings(settings),
      m_program(field("m_program", settings.whisperProgram, QStringLiteral("whisper-cli"))),
      m_model(field("m_model", settings.whisperModel, QStringLiteral("ggml-base.bin"))),
      m_language(field("m_language", settings.whisperLanguage, QStringLiteral("auto"))),
      m_problem(new QLabel)
{
    setObjectName(QStringLiteral("RecogniserDialog"));
    setManagedTitle(NvText("Recogniser"));
    m_problem->setObjectName(QStringLiteral("m_problem"));
    m_problem->setTextFormat(Qt::PlainText);
    m_problem->setWordWrap(true);
    QPalette attention;
    attention.setColor(QPalette::WindowText,
                       Palette::PaletteManager::Instance().color(QStringLiteral("AttentionColor")));
    m_problem->setPalette(attention);
    layOut();
}

QLineEdit* RecogniserDialog::field(const char* name, const QString& text, const QString& hint)
{
    auto* made = new QLineEdit(text, this);
    made->setObjectName(QLatin1String(name));
    made->setPlaceholderText(hint);
    return made;
}

QWidget* RecogniserDialog::withBrowse(QLineEdit* field, const QString& title)
{
    auto* row = new QWidget;
    auto* browse = new ViewDeckQt::StyledButton(QStringLiteral("Browse..."));
    browse->setObjectName(QStringLiteral("m_browse"));
    browse->setAccessibleName(title);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field, 1);
    layout->addWidget(browse);
    connect(browse, &QPushButton::clicked, this, [this, field, title] {
        const QString file = QFileDialog::getOpenFileName(this, title, field->text());
        if (!file.isEmpty())
            field->setText(file);
    });
    return row;
}

void RecogniserDialog::layOut()
{
    auto* hint = new QuietLabel(QStringLiteral(
        "Speech is recognised with PocketSphinx in US English, which is built in. For other languages name "
        "the command-line program of whisper.cpp and a model for it. All of it works offline."));
    hint->setWordWrap(true);
    auto* form = new QFormLayout;
    form->addRow(fieldTitle(QStringLiteral("&Program:"), m_program),
                 withBrowse(m_program, QStringLiteral("Program of whisper.cpp")));
    form->addRow(fieldTitle(QStringLiteral("&Model:"), m_model),
                 withBrowse(m_model, QStringLiteral("Model of whisper.cpp")));
    form->addRow(fieldTitle(QStringLiteral("&Language:"), m_language), m_language);
    auto* buttons = new QDialogButtonBox;
    buttons->addButton(new ViewDeckQt::StyledButton(QStringLiteral("OK")), QDialogButtonBox::AcceptRole);
    buttons->addButton(new ViewDeckQt::StyledButton(QStringLiteral("Cancel")), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &RecogniserDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &RecogniserDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(spacing::margin);
    layout->addWidget(hint);
    layout->addLayout(form);
    layout->addWidget(m_problem);
    layout->addStretch();
    layout->addWidget(buttons);
    m_problem->hide();
    const auto browse = findChildren<QPushButton*>(QStringLiteral("m_browse"));
    const QList<QWidget*> order{m_program, browse.first(), m_model, browse.last(), m_language};
    for (int i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
    m_program->setFocus();
    setMinimumWidth(dialogWidth);
}

speech::RecogniserSettings RecogniserDialog::settings() const
{
    speech::RecogniserSettings settings = m_settings;
    settings.whisperProgram = m_program->text().trimmed();
    settings.whisperModel = m_model->text().trimmed();
    settings.whisperLanguage = m_language->text().trimmed();
    return settings;
}

void RecogniserDialog::accept()
{
    const auto name = services::recogniserName(settings());
    if (name)
        return QDialog::accept();
    m_problem->setText(name.error().sentence());
    m_problem->show();
}

} // namespace desk::app
