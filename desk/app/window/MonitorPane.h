#pragma once

#include "desk/media/Player.h"
#include "desk/media/Timecode.h"

#include <QHash>
#include <QWidget>

#include <memory>

class QLabel;
class QToolButton;

namespace ViewDeckQt
{
class StyledIconButton;
}

namespace desk::app
{

class MonitorView;
class PositionBar;

/// A monitor: picture, position bar, timecode and transport over a player. While it has the focus J, K and L shuttle, I
/// and O mark, the space bar plays, the arrows step and Home and End go to the ends.
///
/// Windows that follow a monitor use player(): its position, marks and signals are the monitor's.
class MonitorPane : public QWidget
{
    Q_OBJECT

public:
    enum class Kind { Source, Record };

    /// The output may be shared with other monitors of which one plays at a time.
    MonitorPane(Kind kind, std::shared_ptr<media::SoundOutput> output, QWidget* parent = nullptr);
    ~MonitorPane() override;

    Kind kind() const { return m_kind; }

    media::Player& player() { return m_player; }

    /// Opens a sequence beside the user-interface thread and shows it; the last one asked for counts. A file that
    /// cannot be opened leaves the monitor with the reason in its place.
    void open(const QString& path, const QString& name);
    /// Shows nothing.
    void close();

    /// The text in place of a picture; empty while there is one.
    QString message() const;

signals:
    /// A bin item that was dropped on the monitor.
    void sequenceDropped(const QString& id);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    struct ButtonRow;
    static const ButtonRow buttonRows[];

    void createWidgets();
    void createButtons();
    void layOut();
    void connectAll();
    /// What a thread that opens a file knows of the monitor.
    struct Opening;
    void forgetOpening();
    void finish(const std::shared_ptr<Opening>& opening, const Result<media::Sequence>& sequence);
    void showLoaded();
    void showState();
    void showPosition();
    void showMarks();
    void showMessage();
    QString invitationText() const;
    void goTo(qint64 frame);

    Kind m_kind;
    media::Player m_player;
    media::Timecode m_timecode;
    /// What was asked for last; while it is being opened, and after a failure, all there is to say of it.
    QString m_asked;
    std::shared_ptr<Opening> m_opening;
    QString m_failure;
    QLabel* m_title = nullptr;
    QLabel* m_name = nullptr;
    MonitorView* m_view = nullptr;
    PositionBar* m_bar = nullptr;
    QLabel* m_time = nullptr;
    QLabel* m_length = nullptr;
    QHash<QString, ViewDeckQt::StyledIconButton*> m_buttons;
};

} // namespace desk::app
