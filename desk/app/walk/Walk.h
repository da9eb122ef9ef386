#pragma once

#include "desk/app/walk/Hand.h"
#include "desk/base/Result.h"

#include <QModelIndex>
#include <QString>
#include <QTimer>

#include <memory>

class STT_TranscriptManagerWindow;

namespace ViewDeckQt
{
class AbstractParamWidget;
}

namespace desk::app
{

class MonitorPane;

class DeskWindow;
class Host;
class JobRow;

/// What a walk is made with.
struct WalkRequest {
    QString media;
    /// The parent folder of the delivery.
    QString folder;
    /// Where the pictures go; empty for none.
    QString pictures;
    QString profile;
    int firstPicture = 1;
};

/// A new user's first hour, through the real window and without anybody at it: from the empty desk to a delivery that
/// is written, and after a restart back to where the work was. Each step looks for its result and takes a picture.
class Walk
{
public:
    explicit Walk(const WalkRequest& request);
    ~Walk();

    /// From the first start to the end of the program. Needs a profile that was never used.
    Status work();
    /// What a second process finds. The folder of the delivery.
    Result<QString> comeBack();
    /// The page with most on it in both skins, after work(). The pictures' names say how large the screen shows things.
    Status look();

    /// The number of the next picture.
    int nextPicture() const { return m_nextPicture; }

private:
    Status open();
    Status takeSteps(const QVector<Status (Walk::*)()>& steps);

    Status start();
    Status fillBin();
    Status watchClip();
    Status watchTimeline();
    Status openTranscript();
    Status transcribeClip();
    Status hideMissingClips();
    Status followTranscript();
    Status searchTranscript();
    Status nameSpeaker();
    Status transcribeTimeline();
    Status failToTranscribe();
    Status loseTranscripts();
    Status createDelivery();
    Status dropSequence();
    Status renameDelivery();
    Status fillIn();
    Status chooseFolder();
    Status describeComposition();
    Status groupTracks();
    Status exportDelivery();
    Status readCommitted();
    Status cancelExport();
    Status changeSkin();
    Status refuseToForget();
    Status quit();

    QString cinemaFolder() const;

    /// A second clip of the timeline.
    QString secondMedia() const { return m_request.folder + QStringLiteral("/interview.mov"); }

    STT_TranscriptManagerWindow& transcript() const;
    /// Puts something else in the place of the profile's transcripts.
    void hideTranscripts() const;
    /// Opens a row of the bin and waits for its picture.
    Status watch(int row, MonitorPane& monitor);
    QModelIndex delivery(int row) const;
    QModelIndex composition(int row) const;
    Status expect(bool held, const QString& what) const;
    /// The widget of a parameter on the page that is shown; null when there is none.
    ViewDeckQt::AbstractParamWidget* shownParameter(const QString& id) const;
    Status type(const QString& parameter, const QString& text);
    void answerBox(const QString& button, const QString& picture);
    void watchForSurprises();

    WalkRequest m_request;
    std::unique_ptr<Host> m_host;
    std::unique_ptr<DeskWindow> m_window;
    std::unique_ptr<Hand> m_hand;
    QTimer m_watch;
    QString m_surprise;
    int m_nextPicture = 1;
};

} // namespace desk::app
