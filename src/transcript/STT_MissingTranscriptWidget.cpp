#include "StratacutUI/STT_MissingTranscriptWidget.h"

#include "LineParts.h"
#include "NvCore/NvText.h"
#include "ViewDeckQt/PaletteManager.h"
#include "ViewDeckQt/StyledButton.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QProgressBar>
#include <QStyle>

namespace
{
constexpr int radius = 5;
constexpr int padding = 10;
constexpr int stripe = 3;
constexpr int stripeLeft = 4;
constexpr int progressWidth = 140;
constexpr int progressHeight = 6;

void showElided(QLabel* label, const QString& text)
{
    const QString shown = label->fontMetrics().elidedText(text, Qt::ElideRight, label->width());
    label->setText(shown);
    // Whatever direction the name reads in, it stands above its sentence.
    const Qt::Alignment lines = QStyle::visualAlignment(label->layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter);
    label->setAlignment(lines | Qt::AlignAbsolute);
    label->setToolTip(shown == text ? QString() : text.toHtmlEscaped());
}

QLabel* plainLabel(QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    return label;
}
} // namespace

STT_MissingTranscriptWidget::STT_MissingTranscriptWidget(QWidget* parent) : QWidget(parent)
{
    createWidgets();
    layOut();
    showState();
    connect(m_transcribe, &QPushButton::clicked, this,
            [this] { emit transcribeRequested(QString::fromStdString(m_clip.mediaGuid)); });
}

void STT_MissingTranscriptWidget::createWidgets()
{
    m_timecode = LineParts::timecodeLabel(this);
    m_name = plainLabel(this);
    QFont bold = m_name->font();
    bold.setBold(true);
    m_name->setFont(bold);
    m_sentence = plainLabel(this);
    m_progress = new QProgressBar(this);
    m_progress->setTextVisible(false);
    m_progress->setFixedSize(progressWidth, progressHeight);
    m_transcribe = new ViewDeckQt::StyledButton(stx_func("Transcribe"), this);
    setAutoFillBackground(false);
}

void STT_MissingTranscriptWidget::layOut()
{
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addStretch();
    texts->addWidget(m_name);
    texts->addWidget(m_sentence);
    texts->addStretch();
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(LineParts::edge - LineParts::clipEdge, 0, padding, 0);
    layout->setSpacing(LineParts::gap);
    layout->addWidget(m_timecode);
    layout->addLayout(texts, 1);
    layout->addWidget(m_progress);
    layout->addWidget(m_transcribe);
}

void STT_MissingTranscriptWidget::setClip(const STT_MissingTranscript& clip, const QString& timecode)
{
    m_clip = clip;
    m_timecode->setText(timecode);
    setAccessibleName(QString::fromStdString(clip.clipName));
    showState();
}

void STT_MissingTranscriptWidget::setVisibilities(const STT_Visibilities& visibilities)
{
    m_timecode->setVisible(visibilities.timecode);
}

QString STT_MissingTranscriptWidget::sentence() const
{
    switch (m_clip.state) {
    case STT_Transcription::Waiting:
        return stx_func("Waiting to be transcribed");
    case STT_Transcription::Running:
        if (m_clip.percent < 0)
            return stx_func("Getting ready to transcribe");
        return stx_func("Transcribing, %1 %").toQString().arg(QLocale().toString(m_clip.percent));
    case STT_Transcription::Failed:
        return QString::fromStdString(m_clip.failure);
    case STT_Transcription::Missing:
        break;
    }
    return stx_func("Not transcribed yet");
}

void STT_MissingTranscriptWidget::showState()
{
    const bool waiting = m_clip.state == STT_Transcription::Waiting;
    const bool running = m_clip.state == STT_Transcription::Running;
    m_progress->setVisible(waiting || running);
    m_progress->setRange(0, 100);
    m_progress->setValue(running ? qBound(0, m_clip.percent, 100) : 0);
    m_transcribe->setVisible(!waiting && !running);
    m_transcribe->setText(m_clip.state == STT_Transcription::Failed ? stx_func("Try Again") : stx_func("Transcribe"));
    const bool failed = m_clip.state == STT_Transcription::Failed;
    const QColor attention = Palette::PaletteManager::Instance().color(QStringLiteral("AttentionColor"));
    LineParts::setTextColor(m_timecode, LineParts::dim(palette()));
    LineParts::setTextColor(m_sentence, failed ? attention : LineParts::dim(palette()));
    showTexts();
    update();
}

void STT_MissingTranscriptWidget::showTexts()
{
    layout()->activate();
    showElided(m_name, QString::fromStdString(m_clip.clipName));
    showElided(m_sentence, sentence());
}

void STT_MissingTranscriptWidget::paintEvent(QPaintEvent*)
{
    const Palette::PaletteManager& colors = Palette::PaletteManager::Instance();
    const bool failed = m_clip.state == STT_Transcription::Failed;
    const bool busy = m_clip.state == STT_Transcription::Running;
    const QColor mark = failed ? colors.color(QStringLiteral("AttentionColor"))
                        : busy ? colors.color(QStringLiteral("IconSecondColor"))
                               : colors.color(QStringLiteral("QuietFontColor"));
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(mark);
    painter.drawRoundedRect(QRectF(stripeLeft, padding, stripe, height() - 2 * padding), stripe / 2.0, stripe / 2.0);
}

void STT_MissingTranscriptWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    showTexts();
}

void STT_MissingTranscriptWidget::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange && m_sentence)
        LineParts::fitTimecode(m_timecode);
    if ((event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) && m_sentence)
        showState();
}
