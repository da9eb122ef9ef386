#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/STT_TranscriptData.h"

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

/// The line of a clip that has no transcript: its name, how far its transcription is, and a button that asks for it.
class STRATACUTUI_EXPORT STT_MissingTranscriptWidget : public QWidget
{
    Q_OBJECT

public:
    explicit STT_MissingTranscriptWidget(QWidget* parent = nullptr);

    void setClip(const STT_MissingTranscript& clip, const QString& timecode);

    const STT_MissingTranscript& clip() const { return m_clip; }

    /// Shows or hides the timecode; the other parts do not matter here.
    void setVisibilities(const STT_Visibilities& visibilities);

Q_SIGNALS:
    void transcribeRequested(const QString& mediaGuid);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void createWidgets();
    void layOut();
    void showState();
    void showTexts();
    QString sentence() const;

    STT_MissingTranscript m_clip;
    QLabel* m_timecode = nullptr;
    QLabel* m_name = nullptr;
    QLabel* m_sentence = nullptr;
    QProgressBar* m_progress = nullptr;
    QPushButton* m_transcribe = nullptr;
};
