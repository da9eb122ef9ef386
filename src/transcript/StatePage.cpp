#include "StatePage.h"

#include "LineParts.h"
#include "NvCore/NvText.h"
#include "ViewDeckQt/NineSlice.h"

#include <QEvent>
#include <QFontInfo>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

namespace
{
constexpr int widest = 340;
constexpr double titleScale = 1.4;

struct Texts {
    StatePage::State state;
    const char* picture;
    const char* title;
    const char* sentence;
};

const Texts* textsOf(StatePage::State state)
{
    static const Texts pages[] = {
        {StatePage::State::NothingLoaded, "nothing_loaded", "Nothing Loaded",
         "Load a clip or a sequence in the monitor to see its transcript here."},
        {StatePage::State::EmptyTranscript, "transcript_empty", "Empty transcript",
         "No words were heard in this material."},
        {StatePage::State::HiddenClips, "transcript_empty", "Empty transcript",
         "Clips without a transcript are hidden: \"Show Not Transcribed\" in the menu shows them."},
        {StatePage::State::DatabaseOffline, "database_offline", "Database Offline",
         "The transcript database cannot be read. Nothing in it was changed. Bring it back, then reload the material."},
    };
    const auto* found =
        std::find_if(std::begin(pages), std::end(pages), [&](const Texts& page) { return page.state == state; });
    return found == std::end(pages) ? nullptr : found;
}
} // namespace

StatePage::StatePage(QWidget* over) : QWidget(over)
{
    createWidgets();
    layOut();
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    over->installEventFilter(this);
    setGeometry(over->rect());
    hide();
}

void StatePage::createWidgets()
{
    m_picture = new QLabel(this);
    m_title = new QLabel(this);
    QFont large = font();
    large.setPointSizeF(QFontInfo(large).pointSizeF() * titleScale);
    m_title->setFont(large);
    m_sentence = new QLabel(this);
    m_sentence->setWordWrap(true);
    m_sentence->setMaximumWidth(widest);
    for (QLabel* label : {m_picture, m_title, m_sentence})
        label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
}

void StatePage::layOut()
{
    auto* middle = new QHBoxLayout;
    middle->addStretch();
    middle->addWidget(m_sentence, 1000);
    middle->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(8);
    layout->addStretch(2);
    layout->addWidget(m_picture);
    layout->addWidget(m_title);
    layout->addLayout(middle);
    layout->addStretch(3);
}

void StatePage::showState(State state)
{
    m_state = state;
    showTexts();
    setVisible(state != State::Text);
    raise();
}

void StatePage::showTexts()
{
    const Texts* texts = textsOf(m_state);
    if (!texts)
        return;
    m_picture->setPixmap(NineSlice::GetImage(QStringLiteral("iconsV2/Transcript"), QLatin1String(texts->picture)));
    LineParts::setTextColor(m_sentence, LineParts::dim(palette()));
    m_title->setText(stx_func(texts->title));
    m_sentence->setText(stx_func(texts->sentence));
    setAccessibleName(m_title->text());
    setAccessibleDescription(m_sentence->text());
}

bool StatePage::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
}

void StatePage::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_picture)
        showTexts();
}
