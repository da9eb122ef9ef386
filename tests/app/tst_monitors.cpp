#include "media/MediaMaker.h"
#include "media/Otio.h"
#include "support/TestMain.h"

#include "desk/app/Host.h"
#include "desk/app/walk/Hand.h"
#include "desk/app/window/BinPane.h"
#include "desk/app/window/DeskWindow.h"
#include "desk/app/window/MonitorView.h"
#include "desk/app/window/PositionBar.h"
#include "desk/services/MediaEngine.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QToolButton>

using namespace desk::app;
using desk::media::Player;

/// The monitors in the desk's window, used with mouse and keys.
class TestMonitors : public QObject
{
    Q_OBJECT

    MediaMaker m_maker;
    std::unique_ptr<Host> m_host;
    std::unique_ptr<DeskWindow> m_window;

    MonitorPane& source() const { return m_window->monitor(MonitorPane::Kind::Source); }

    MonitorPane& record() const { return m_window->monitor(MonitorPane::Kind::Record); }

    static MonitorView& view(const MonitorPane& monitor) { return *monitor.findChild<MonitorView*>(); }

    static QString timecode(const MonitorPane& monitor)
    {
        return monitor.findChild<QLabel*>(QStringLiteral("m_time"))->text();
    }

    QModelIndex row(const QString& name) const
    {
        const QAbstractItemModel& bin = *m_window->bin().view().model();
        return bin.match(bin.index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly).value(0);
    }

    void open(const QString& name, MonitorPane& monitor) const
    {
        Hand::doubleClick(&m_window->bin().view(), row(name));
        QTRY_VERIFY(monitor.player().sequence() && monitor.player().sequence()->name == name);
        QTRY_VERIFY(monitor.player().picture());
    }

private slots:

    void initTestCase()
    {
        m_maker.writeWav(QStringLiteral("noise.wav"), noise(48000 * 8, 24, 5), 24);
        QVERIFY(
            m_maker.ffmpeg(QStringLiteral("-f lavfi -i color=red:s=320x180:r=25:d=6,format=yuv422p10le -i @noise.wav "
                                          "-timecode 10:00:00:00 -c:v prores -c:a pcm_s24le @clip.mov")));
        m_maker.write(QStringLiteral("cut.otio"),
                      otio::timeline(
                          {otio::track("Video", {otio::gap(25, 25), otio::clip("clip.mov", otio::range(0, 50, 25))})}));
        m_host = std::make_unique<Host>(m_maker.path(QStringLiteral("profile")));
        QVERIFY(m_host->claim().ok());
        DeskWindow::prepareLook(m_host->profile());
        m_host->load();
        m_window = std::make_unique<DeskWindow>(m_host.get());
        m_window->show();
        QApplication::setActiveWindow(m_window.get());
        m_window->addMedia({m_maker.path("clip.mov"), m_maker.path("cut.otio"), m_maker.path("noise.wav")});
        QTRY_COMPARE(m_window->bin().view().model()->rowCount(), 3);
    }

    void cleanupTestCase()
    {
        m_window.reset();
        m_host.reset();
    }

    void clipsAndTimelinesGoToTheirMonitors()
    {
        QVERIFY(source().message().contains(QStringLiteral("clip")));
        open(QStringLiteral("clip"), source());
        QVERIFY(view(source()).hasFocus());
        QCOMPARE(timecode(source()), QStringLiteral("10:00:00:00"));
        QVERIFY(!record().player().sequence());
        m_window->bin().view().setCurrentIndex(row(QStringLiteral("cut")));
        QTest::keyClick(&m_window->bin().view(), Qt::Key_Return);
        QTRY_VERIFY(record().player().picture());
        QCOMPARE(record().player().frames(), 75);
        // A drag chooses the monitor itself.
        const QStringList ids{row(QStringLiteral("noise")).data(Qt::UserRole + 1).toString()};
        const std::unique_ptr<QMimeData> data(desk::services::MediaEngine::mimeData(ids));
        QVERIFY(Hand::drop(&record(), *data, record().rect().center(), Qt::MoveAction));
        QTRY_COMPARE(record().message(), QStringLiteral("Sound only"));
    }

    void thePictureFillsTheMonitorAndKeepsItsShape()
    {
        open(QStringLiteral("clip"), source());
        MonitorView& monitor = view(source());
        const QSize fitted = QSize(320, 180).scaled(monitor.size(), Qt::KeepAspectRatio);
        QTRY_VERIFY((source().player().picture()->size - fitted).isNull() ||
                    std::abs(source().player().picture()->size.width() - fitted.width()) == 1);
        const QImage shown = monitor.grab().toImage();
        const QColor middle = shown.pixelColor(shown.rect().center());
        QVERIFY2(middle.red() > 220 && middle.green() < 30 && middle.blue() < 30, qPrintable(middle.name()));
        const bool wide = fitted.height() < monitor.height();
        QVERIFY(fitted != monitor.size());
        QVERIFY(shown.pixelColor(wide ? QPoint(shown.width() / 2, 1) : QPoint(1, shown.height() / 2)).red() < 30);
    }

    void keysMoveMarkAndShuttle()
    {
        open(QStringLiteral("clip"), source());
        Player& player = source().player();
        QWidget* keys = &view(source());

        const struct {
            int key;
            Qt::KeyboardModifiers modifiers;
            qint64 position;
        } steps[] = {{Qt::Key_End, Qt::NoModifier, 149},     {Qt::Key_Left, Qt::NoModifier, 148},
                     {Qt::Key_Left, Qt::ShiftModifier, 138}, {Qt::Key_O, Qt::NoModifier, 138},
                     {Qt::Key_Home, Qt::NoModifier, 0},      {Qt::Key_Right, Qt::ShiftModifier, 10},
                     {Qt::Key_Right, Qt::NoModifier, 11},    {Qt::Key_I, Qt::NoModifier, 11},
                     {Qt::Key_O, Qt::ShiftModifier, 138},    {Qt::Key_I, Qt::ShiftModifier, 11}};

        for (const auto& step : steps) {
            QTest::keyClick(keys, Qt::Key(step.key), step.modifiers);
            QCOMPARE(player.position(), step.position);
        }
        QCOMPARE(player.markIn(), 11);
        QCOMPARE(player.markOut(), 138);
        QCOMPARE(timecode(source()), QStringLiteral("10:00:00:11"));
        QTest::keyClick(keys, Qt::Key_L);
        QTest::keyClick(keys, Qt::Key_L);
        QKeyEvent held(QEvent::KeyPress, Qt::Key_L, Qt::NoModifier, QStringLiteral("l"), true);
        QApplication::sendEvent(keys, &held);
        QCOMPARE(player.speed(), 2);
        QTest::keyClick(keys, Qt::Key_K);
        QVERIFY(!player.isPlaying());
        QTest::keyClick(keys, Qt::Key_G);
        QCOMPARE(player.markIn(), Player::none);
    }

    void mouseScrubsAndButtonsPlay()
    {
        open(QStringLiteral("clip"), source());
        Player& player = source().player();
        auto* bar = source().findChild<PositionBar*>();
        QTest::mousePress(bar, Qt::LeftButton, {}, QPoint(qRound(bar->placeOf(50)), 9));
        const qint64 pressed = player.position();
        QVERIFY(std::abs(pressed - 50) <= 1);
        QTest::mouseMove(bar, QPoint(qRound(bar->placeOf(100)), 9));
        QTest::mouseRelease(bar, Qt::LeftButton, {}, QPoint(qRound(bar->placeOf(100)), 9));
        QTRY_VERIFY(player.picture()->frame == player.position());
        auto* play = source().findChild<QToolButton*>(QStringLiteral("m_play"));
        QCOMPARE(play->accessibleName(), QStringLiteral("Play (Space)"));
        QTest::mouseClick(play, Qt::LeftButton);
        QVERIFY(player.isPlaying());
        QCOMPARE(play->accessibleName(), QStringLiteral("Stop (Space)"));
        // The other monitor's sound ends this one's.
        open(QStringLiteral("cut"), record());
        m_window->action(QStringLiteral("playStop"))->trigger();
        QVERIFY(record().player().isPlaying() && !player.isPlaying());
        QTest::keyClick(&view(record()), Qt::Key_Space);
        QVERIFY(!record().player().isPlaying());
    }

    void anOpenMenuDoesNotHoldPlaybackUp()
    {
        open(QStringLiteral("clip"), source());
        QTest::keyClick(&view(source()), Qt::Key_Space);
        qint64 seen = 0;
        Hand::whenOpen([&](QWidget* menu) {
            const qint64 from = source().player().position();
            Hand::waitFor([&] { return source().player().position() > from + 10; });
            seen = source().player().position() - from;
            menu->close();
        });
        QMenu menu;
        menu.addAction(QStringLiteral("Nothing"));
        menu.exec(m_window->mapToGlobal(QPoint(20, 20)));
        source().player().stop();
        QVERIFY2(seen > 10, qPrintable(QString::number(seen)));
    }

    void aFileThatIsGoneLeavesTheReason()
    {
        QVERIFY(QFile::rename(m_maker.path("clip.mov"), m_maker.path("elsewhere.mov")));
        Hand::doubleClick(&m_window->bin().view(), row(QStringLiteral("clip")));
        QTRY_VERIFY(source().message().contains(QStringLiteral("clip.mov: there is no such file")));
        Hand::doubleClick(&m_window->bin().view(), row(QStringLiteral("cut")));
        QTRY_VERIFY(record().message().contains(QStringLiteral("clip.mov")));
        QVERIFY(!record().findChild<QToolButton*>(QStringLiteral("m_play"))->isEnabled());
        QVERIFY(QFile::rename(m_maker.path("elsewhere.mov"), m_maker.path("clip.mov")));
        open(QStringLiteral("cut"), record());
        QCOMPARE(record().message(), QString());
    }
};

STRATACUT_TEST_MAIN(TestMonitors)
#include "tst_monitors.moc"
