#pragma once

#include "desk/services/TranscriptWindowInfo.h"

#include <QTimer>
#include <QWidget>

class STT_TranscriptManagerWindow;

namespace desk::app
{

/// The transcript of what the monitors hold, which follows the one that its toolbar shows; and the dialogs that its
/// menu asks for.
class TranscriptPane : public QWidget
{
    Q_OBJECT

public:
    /// Service and players outlive it.
    TranscriptPane(services::TranscriptService& service, media::Player& source, media::Player& record,
                   QWidget* parent = nullptr);
    ~TranscriptPane() override;

    STT_TranscriptManagerWindow& window() const { return *m_window; }

    /// The folder that scripts go to.
    void setFolder(const QString& folder) { m_folder = folder; }

    /// Asks which tracks of the shown material are transcribed and shown.
    void askForTracks();

    /// Asks for a file and takes it as the transcript of a clip.
    void askForImport(const services::TranscriptService::Clip& clip);

signals:
    /// Something to be told in passing.
    void noted(const QString& text);
    /// Something that could not be done; one sentence.
    void failed(const QString& sentence);

protected:
    void changeEvent(QEvent* event) override;

private:
    void followPlayer(media::Player& player);
    void followService(services::TranscriptService& service);
    void grant(services::TranscriptWindowInfo::Wish wish);
    void askForExport(const QString& title, bool captionsOnly);
    void createSubcaptions();
    void createScript();

    /// The window's own.
    services::TranscriptWindowInfo* m_info;
    STT_TranscriptManagerWindow* m_window;
    /// Gathers changes that come one after the other, as the percents of a transcription do.
    QTimer m_refresh;
    QString m_folder;
};

} // namespace desk::app
