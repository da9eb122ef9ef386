#include "desk/app/window/MonitorPane.h"

#include "ViewDeckQt/StyledIconButton.h"
#include "desk/app/window/MonitorView.h"
#include "desk/app/window/PaneParts.h"
#include "desk/app/window/PositionBar.h"
#include "desk/services/MediaEngine.h"

#include <QDragEnterEvent>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QPainter>
#include <QThreadPool>
#include <QVBoxLayout>

#include <mutex>

namespace desk::app
{

using media::Player;

namespace
{
const QString icons = QStringLiteral("iconsV2/Transport");

struct KeyRow {
    int key;
    Qt::KeyboardModifiers modifiers;
    void (*act)(Player& player);
};

constexpr int manyFrames = 10;

const KeyRow keyRows[] = {
    {Qt::Key_J, Qt::NoModifier, [](Player& player) { player.shuttle(-1); }},
    {Qt::Key_K, Qt::NoModifier, [](Player& player) { player.stop(); }},
    {Qt::Key_L, Qt::NoModifier, [](Player& player) { player.shuttle(1); }},
    {Qt::Key_Space, Qt::NoModifier, [](Player& player) { player.togglePlay(); }},
    {Qt::Key_Left, Qt::NoModifier, [](Player& player) { player.step(-1); }},
    {Qt::Key_Right, Qt::NoModifier, [](Player& player) { player.step(1); }},
    {Qt::Key_Left, Qt::ShiftModifier, [](Player& player) { player.step(-manyFrames); }},
    {Qt::Key_Right, Qt::ShiftModifier, [](Player& player) { player.step(manyFrames); }},
    {Qt::Key_Home, Qt::NoModifier, [](Player& player) { player.seek(0); }},
    {Qt::Key_End, Qt::NoModifier, [](Player& player) { player.seek(player.frames()); }},
    {Qt::Key_I, Qt::NoModifier, [](Player& player) { player.markInHere(); }},
    {Qt::Key_O, Qt::NoModifier, [](Player& player) { player.markOutHere(); }},
    {Qt::Key_I, Qt::ShiftModifier, [](Player& player) { player.goToMarkIn(); }},
    {Qt::Key_O, Qt::ShiftModifier, [](Player& player) { player.goToMarkOut(); }},
    {Qt::Key_G, Qt::NoModifier, [](Player& player) { player.clearMarks(); }},
};

QLabel* timeLabel(const QString& name)
{
    auto* label = new QLabel;
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(label->font().pointSizeF());
    label->setFont(font);
    label->setTextFormat(Qt::PlainText);
    label->setAccessibleName(name);
    return label;
}
} // namespace

struct MonitorPane::ButtonRow {
    const char* name;
    const char* icon;
    const char* toolTip;
    void (*act)(Player& player);
};

const MonitorPane::ButtonRow MonitorPane::buttonRows[] = {
    {"m_markIn", "mark_in", "Mark in (I)", [](Player& player) { player.markInHere(); }},
    {"m_toStart", "to_start", "To the start (Home)", [](Player& player) { player.seek(0); }},
    {"m_stepBack", "step_back", "One frame back (Left)", [](Player& player) { player.step(-1); }},
    {"m_play", "play", "Play (Space)", [](Player& player) { player.togglePlay(); }},
    {"m_stepForward", "step_forward", "One frame on (Right)", [](Player& player) { player.step(1); }},
    {"m_toEnd", "to_end", "To the end (End)", [](Player& player) { player.seek(player.frames()); }},
    {"m_markOut", "mark_out", "Mark out (O)", [](Player& player) { player.markOutHere(); }},
};

MonitorPane::MonitorPane(Kind kind, std::shared_ptr<media::SoundOutput> output, QWidget* parent)
    : QWidget(parent), m_kind(kind), m_player(std::move(output))
{
    setObjectName(kind == Kind::Source ? QStringLiteral("m_sourceMonitor") : QStringLiteral("m_recordMonitor"));
    setAcceptDrops(true);
    createWidgets();
    createButtons();
    layOut();
    connectAll();
    showLoaded();
}

/// One file that is being opened, which takes its time: nobody waits for it, neither a window that closes nor the
/// next file.
struct MonitorPane::Opening {
    std::mutex mutex;
    /// Null when it is not wanted any more.
    MonitorPane* pane = nullptr;

    bool isWanted()
    {
        const std::lock_guard lock(mutex);
        return pane != nullptr;
    }
};

MonitorPane::~MonitorPane()
{
    forgetOpening();
}

void MonitorPane::forgetOpening()
{
    const std::shared_ptr<Opening> opening = std::move(m_opening);
    if (!opening)
        return;
    const std::lock_guard lock(opening->mutex);
    opening->pane = nullptr;
}

void MonitorPane::createWidgets()
{
    const QString title = m_kind == Kind::Source ? QStringLiteral("Source") : QStringLiteral("Record");
    m_title = paneTitle(title);
    m_name = new QuietLabel;
    // A long name takes no room from the other monitor.
    m_name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_view = new MonitorView;
    m_view->setObjectName(QStringLiteral("m_view"));
    m_view->setAccessibleName(title + QStringLiteral(" Monitor"));
    m_view->installEventFilter(this);
    setFocusProxy(m_view);
    m_bar = new PositionBar;
    m_bar->setObjectName(QStringLiteral("m_position"));
    m_bar->setAccessibleName(QStringLiteral("Position"));
    m_time = timeLabel(QStringLiteral("Timecode"));
    m_time->setObjectName(QStringLiteral("m_time"));
    m_length = timeLabel(QStringLiteral("Duration"));
    m_length->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

void MonitorPane::createButtons()
{
    for (const ButtonRow& row : buttonRows) {
        auto* button = new ViewDeckQt::StyledIconButton;
        button->setObjectName(QLatin1String(row.name));
        button->setImage(icons, QLatin1String(row.icon));
        button->setToolTip(QLatin1String(row.toolTip));
        // A click leaves the keys with the picture.
        button->setFocusPolicy(Qt::TabFocus);
        connect(button, &QToolButton::clicked, this, [this, act = row.act] { act(m_player); });
        m_buttons.insert(button->objectName(), button);
    }
}

void MonitorPane::layOut()
{
    auto* top = new QHBoxLayout;
    top->addWidget(m_title);
    top->addSpacing(spacing::gap);
    top->addWidget(m_name, 1);
    auto* transport = new QHBoxLayout;
    transport->setSpacing(2);
    // Time runs to the right, as on the bar above, wherever lines start.
    transport->setDirection(isRightToLeft() ? QBoxLayout::RightToLeft : QBoxLayout::LeftToRight);
    transport->addWidget(m_time, 1);
    for (const ButtonRow& row : buttonRows)
        transport->addWidget(m_buttons.value(QLatin1String(row.name)));
    transport->addWidget(m_length, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(spacing::margin, spacing::margin, spacing::margin, spacing::gap);
    layout->setSpacing(spacing::gap);
    layout->addLayout(top);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_bar);
    layout->addLayout(transport);
}

void MonitorPane::connectAll()
{
    connect(m_view, &MonitorView::boxChanged, &m_player, &Player::setBox);
    connect(m_bar, &QAbstractSlider::sliderPressed, this, [this] { goTo(m_bar->sliderPosition()); });
    connect(m_bar, &QAbstractSlider::sliderMoved, &m_player, &media::Player::scrub);
    connect(&m_player, &Player::loaded, this, &MonitorPane::showLoaded);
    connect(&m_player, &Player::stateChanged, this, &MonitorPane::showState);
    connect(&m_player, &Player::positionChanged, this, &MonitorPane::showPosition);
    connect(&m_player, &Player::marksChanged, this, &MonitorPane::showMarks);
    connect(&m_player, &Player::pictureChanged, this, [this] {
        m_view->setPicture(m_player.picture());
        showMessage();
    });
}

void MonitorPane::goTo(qint64 frame)
{
    m_player.stop();
    m_player.seek(frame);
}

void MonitorPane::open(const QString& path, const QString& name)
{
    forgetOpening();
    m_asked = name;
    m_opening = std::make_shared<Opening>();
    m_opening->pane = this;
    m_failure.clear();
    m_player.unload();
    showLoaded();
    QThreadPool::globalInstance()->start([path, opening = m_opening] {
        if (!opening->isWanted())
            return;
        auto sequence = media::openSequence(path);
        const std::lock_guard lock(opening->mutex);
        MonitorPane* pane = opening->pane;
        const auto finish = [pane, opening, sequence = std::move(sequence)] { pane->finish(opening, sequence); };
        if (pane != nullptr)
            QMetaObject::invokeMethod(pane, finish, Qt::QueuedConnection);
    });
}

void MonitorPane::finish(const std::shared_ptr<Opening>& opening, const Result<media::Sequence>& sequence)
{
    if (opening != m_opening)
        return;
    m_opening.reset();
    if (!sequence)
        m_failure = sequence.error().sentence();
    else
        m_player.load(*sequence);
    showLoaded();
}

void MonitorPane::close()
{
    forgetOpening();
    m_asked.clear();
    m_failure.clear();
    m_player.unload();
    showLoaded();
}

QString MonitorPane::message() const
{
    return m_view->message();
}

QString MonitorPane::invitationText() const
{
    return m_kind == Kind::Source ? QStringLiteral("Double-click a clip in the bin to watch it here")
                                  : QStringLiteral("Double-click a timeline in the bin to watch it here");
}

void MonitorPane::showMessage()
{
    const media::PreviewPtr& picture = m_player.picture();
    if (!m_failure.isEmpty())
        m_view->setMessage(m_failure, MonitorView::Tone::Attention);
    else if (m_opening)
        m_view->setMessage(QStringLiteral("Opening %1...").arg(m_asked));
    else if (!m_player.sequence())
        m_view->setMessage(invitationText());
    else if (picture && !picture->problem.isEmpty())
        m_view->setMessage(picture->problem, MonitorView::Tone::Attention);
    else if (!m_player.sequence()->picture)
        m_view->setMessage(QStringLiteral("Sound only"));
    else
        m_view->setMessage({});
}

void MonitorPane::showLoaded()
{
    const auto& sequence = m_player.sequence();
    m_name->setText(sequence ? sequence->name : m_asked);
    m_name->setToolTip(sequence ? sequence->path : QString());
    m_timecode = sequence ? media::Timecode::startingAt(sequence->startTimecode, m_player.rate()) : media::Timecode();
    m_bar->setFrames(m_player.frames());
    m_view->setPicture(m_player.picture());
    showMessage();
    showMarks();
    showPosition();
    showState();
}

void MonitorPane::showState()
{
    const bool plays = m_player.isPlaying();
    for (auto* button : qAsConst(m_buttons))
        button->setEnabled(m_player.sequence().has_value());
    auto* play = m_buttons.value(QStringLiteral("m_play"));
    play->setImage(icons, plays ? QStringLiteral("stop") : QStringLiteral("play"));
    play->setToolTip(plays ? QStringLiteral("Stop (Space)") : QStringLiteral("Play (Space)"));
    play->setAccessibleName(play->toolTip());
}

void MonitorPane::showPosition()
{
    m_time->setText(m_player.sequence() ? m_timecode.text(m_player.position()) : QString());
    if (!m_bar->isSliderDown())
        m_bar->setValue(int(m_player.position()));
}

/// Beside the transport stands how long the marked span is, or all of it.
void MonitorPane::showMarks()
{
    const qint64 in = m_player.markIn();
    const qint64 out = m_player.markOut();
    m_bar->setMarks(in, out);
    const qint64 from = std::max<qint64>(in, 0);
    const qint64 to = out < 0 ? m_player.frames() : out + 1;
    media::Timecode length = m_timecode;
    length.start = 0;
    m_length->setText(m_player.sequence() ? length.text(to - from) : QString());
    const bool marked = in >= 0 || out >= 0;
    m_length->setToolTip(marked ? QStringLiteral("Length between the marks") : QStringLiteral("Length"));
}

void MonitorPane::keyPressEvent(QKeyEvent* event)
{
    // A key that is held down neither shuttles faster and faster nor plays and stops in turn; it only steps on.
    const bool steps = event->key() == Qt::Key_Left || event->key() == Qt::Key_Right;
    const bool counts = steps || !event->isAutoRepeat();
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    for (const KeyRow& row : keyRows) {
        if (row.key == event->key() && row.modifiers == modifiers)
            return counts ? row.act(m_player) : void();
    }
    QWidget::keyPressEvent(event);
}

bool MonitorPane::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_view && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut))
        update();
    return QWidget::eventFilter(watched, event);
}

/// The monitor that has the keys is outlined.
void MonitorPane::paintEvent(QPaintEvent*)
{
    if (!m_view->hasFocus())
        return;
    QPainter painter(this);
    painter.fillRect(m_view->geometry().adjusted(-2, -2, 2, 2), palette().color(QPalette::Link));
}

void MonitorPane::dragEnterEvent(QDragEnterEvent* event)
{
    if (services::MediaEngine::idsOf(*event->mimeData()).isEmpty())
        return event->ignore();
    event->acceptProposedAction();
}

void MonitorPane::dropEvent(QDropEvent* event)
{
    const QStringList ids = services::MediaEngine::idsOf(*event->mimeData());
    if (ids.isEmpty())
        return event->ignore();
    event->acceptProposedAction();
    m_view->setFocus(Qt::MouseFocusReason);
    emit sequenceDropped(ids.first());
}

} // namespace desk::app
