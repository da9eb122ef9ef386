#include "StratacutUI/STT_EntryWidget.h"

#include "LineParts.h"
#include "NvCore/NvText.h"
#include "StratacutUI/STT_SpeakerTextEdit.h"
#include "ViewDeckQt/StyledIconButton.h"

#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>

STT_EntryWidget::STT_EntryWidget(QWidget* parent) : QWidget(parent)
{
    createWidgets();
    layOut();
    connect(m_menuButton, &QToolButton::clicked, this,
            [this] { emit speakerMenuRequested(m_menuButton->mapToGlobal(m_menuButton->rect().bottomLeft())); });
}

void STT_EntryWidget::createWidgets()
{
    m_timecode = LineParts::timecodeLabel(this);
    m_speaker = new STT_SpeakerTextEdit(this);
    m_speaker->setAccessibleName(stx_func("Speaker"));
    auto* button = new ViewDeckQt::StyledIconButton(this);
    button->setImage(QStringLiteral("icons/Arrows"), QStringLiteral("small_arrow_down"));
    button->setToolTip(stx_func("Identify or correct the speaker"));
    button->setFocusPolicy(Qt::NoFocus);
    button->setFixedSize(LineParts::menuButton, LineParts::menuButton);
    // Fifty arrows below each other would be all that one sees.
    QSizePolicy policy = button->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    button->setSizePolicy(policy);
    button->hide();
    m_menuButton = button;
}

void STT_EntryWidget::layOut()
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(LineParts::edge, 0, LineParts::edge, 0);
    layout->setSpacing(LineParts::gap);
    layout->addWidget(m_timecode);
    auto* speaker = new QHBoxLayout;
    speaker->setSpacing(0);
    speaker->addWidget(m_speaker);
    speaker->addWidget(m_menuButton);
    layout->addLayout(speaker);
    layout->addStretch();
}

void STT_EntryWidget::setLine(const Line& line)
{
    m_segment = line.segment;
    m_speaker->showName(line.speaker);
    if (m_timecode->text() != line.timecode)
        m_timecode->setText(line.timecode);
}

void STT_EntryWidget::setVisibilities(const STT_Visibilities& visibilities)
{
    m_timecode->setVisible(visibilities.timecode);
    m_speaker->setVisible(visibilities.speaker);
    if (!visibilities.speaker)
        m_menuButton->hide();
}

void STT_EntryWidget::contextMenuEvent(QContextMenuEvent* event)
{
    emit speakerMenuRequested(event->globalPos());
}

void STT_EntryWidget::enterEvent(QEvent* event)
{
    QWidget::enterEvent(event);
    m_menuButton->setVisible(!m_speaker->isHidden());
}

void STT_EntryWidget::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    m_menuButton->hide();
}

void STT_EntryWidget::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_timecode)
        LineParts::setTextColor(m_timecode, LineParts::dim(palette()));
    if (event->type() == QEvent::FontChange && m_timecode)
        LineParts::fitTimecode(m_timecode);
}
