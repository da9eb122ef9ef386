#pragma once

#include "ViewDeckQt/ManagedWindow.h"
#include "desk/app/window/MonitorPane.h"
#include "desk/app/window/WindowSettings.h"
#include "desk/base/Result.h"
#include "desk/speech/store/StoreContents.h"

#include <QHash>
#include <QMainWindow>
#include <QModelIndex>
#include <QStringList>
#include <QTimer>

class IMF_ManagerWindow;
class IMF_TreeView;
class QActionGroup;
class QLabel;
class QSplitter;
class QTabWidget;

namespace desk::services
{
class Profile;
struct BinItem;
} // namespace desk::services

namespace desk::app
{

class BinModel;
class BinPane;
class Host;
class JobPane;
class MediaLoader;
class Thumbnails;
class TranscriptPane;

/// The desk: the bin on the left; on the right the monitors, below them the package manager or the transcript, and the
/// jobs. All that can be done here is an action of the menu bar with a key of its own. Work is kept a moment after each
/// change and when the window closes.
class DeskWindow : public QMainWindow, public ViewDeckQt::ManagedWindow
{
    Q_OBJECT

public:
    /// Gives the program the look that the profile was left with. Before the host is loaded: the package manager's
    /// model draws its images once.
    static void prepareLook(const services::Profile& profile);

    /// The host must be loaded and outlive the window.
    explicit DeskWindow(Host* host);
    ~DeskWindow() override;

    /// How long after a change it is kept, in milliseconds.
    static constexpr int saveDelay = 1500;

    void addMedia(const QStringList& paths);

    /// The menu bar's actions by name: "addMedia", "export", ...
    QAction* action(const QString& name) const { return m_actions.value(name); }

    IMF_TreeView& tree() const;

    BinPane& bin() const { return *m_bin; }

    JobPane& jobs() const { return *m_jobs; }

    TranscriptPane& transcript() const { return *m_transcript; }

    MonitorPane& monitor(MonitorPane::Kind kind) const
    {
        return kind == MonitorPane::Kind::Source ? *m_source : *m_record;
    }

signals:
    /// The work was kept.
    void saved();

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

private:
    struct ActionRow;
    static const ActionRow actionRows[];

    void createWidgets();
    void layOut();
    void createActions();
    void createSkinActions(QMenu* menu);
    void connectAll();
    void connectModel();
    void connectMonitors();
    void connectTranscript();
    void restoreLook();
    WindowSettings look() const;

    void chooseMedia();
    void addSelectedSequences();
    void removeSelectedSequences();
    void newOriginal();
    void newSupplemental();
    void newImp();
    void explore();
    void rename();
    void chooseFolder();
    void exportSelected();
    void refreshSelected();
    void refreshAll();
    void resolveMissing();
    /// Asks first.
    void forgetAbsent();
    void removeSelected();
    void focusBin();
    void focusPackages();
    void focusParameters();
    void focusJobs();
    void focusSource();
    void focusRecord();
    void focusTranscript();
    void switchTranscriptMonitor();
    void chooseTracks();
    void transcribeSelected();
    /// Asks first.
    void transcribeAgain();
    void importTranscript();
    void chooseRecogniser();
    void loadSelectedSequence();
    void togglePlayback();
    void clearMarks();
    void showMonitors();
    void about();

    /// A clip goes to the source monitor, a timeline to the record monitor.
    void loadInMonitor(const QString& id);
    void loadInMonitor(const QString& id, MonitorPane& monitor);
    /// Clips that a former run left waiting.
    void resumeTranscriptions();
    QModelIndex current() const;
    QModelIndex currentDelivery() const;
    void selectNewestDelivery();
    void updateActions();
    void updateHint();
    /// The bin's selected clips whose transcription is at this stage.
    QVector<services::BinItem> selectedClips(speech::ClipState::Stage stage) const;
    void askForMissing(const QModelIndex& delivery);
    void askAndRemove(const QModelIndex& index);
    void showErrors();
    void setSkin(Palette::Skin skin);
    void scheduleSave();
    void scheduleLook();
    void saveWhenDue();
    void finishTyping();
    /// Whether the work could be kept, which the status bar tells, too.
    Status save();
    bool mayCloseWithJobs();
    bool mayLoseDeliveries();
    /// Keeps it, and asks where that fails.
    bool mayLoseWork();
    void closeWhenIdle();

    Host* m_host;
    WindowSettings m_settings;
    Thumbnails* m_thumbnails = nullptr;
    MediaLoader* m_loader = nullptr;
    BinModel* m_binModel = nullptr;
    BinPane* m_bin = nullptr;
    IMF_ManagerWindow* m_manager = nullptr;
    JobPane* m_jobs = nullptr;
    MonitorPane* m_source = nullptr;
    MonitorPane* m_record = nullptr;
    TranscriptPane* m_transcript = nullptr;
    /// The one that keys of the menu bar mean.
    MonitorPane* m_activeMonitor = nullptr;
    /// What is worked on below the monitors, a tab each; a single one shows no tabs.
    QTabWidget* m_work = nullptr;
    QSplitter* m_monitors = nullptr;
    QSplitter* m_across = nullptr;
    QSplitter* m_column = nullptr;
    QLabel* m_hint = nullptr;
    QHash<QString, QAction*> m_actions;
    QStringList m_errors;
    QTimer m_saveTimer;
    bool m_hasNewWork = false;
    bool m_quitWhenIdle = false;
    bool m_asking = false;
};

} // namespace desk::app
