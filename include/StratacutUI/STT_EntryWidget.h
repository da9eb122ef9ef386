#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/STT_TranscriptData.h"

#include <QWidget>

class QLabel;
class QToolButton;
class STT_SpeakerTextEdit;

/// What stands beside the text of a transcript line: the timecode and the speaker of its segment.
///
/// Only the lines in view have one; it is given to another segment when its own leaves the view.
class STRATACUTUI_EXPORT STT_EntryWidget : public QWidget
{
    Q_OBJECT

public:
    struct Line {
        int segment = -1;
        QString speaker;
        QString timecode;
    };

    explicit STT_EntryWidget(QWidget* parent = nullptr);

    /// The number of the segment; -1 while it stands for none.
    int segment() const { return m_segment; }

    void setLine(const Line& line);

    /// Shows the parts asked for; whether clips without a transcript are shown does not matter here.
    void setVisibilities(const STT_Visibilities& visibilities);

    STT_SpeakerTextEdit* speakerEdit() const { return m_speaker; }

Q_SIGNALS:
    /// The user asks for the speaker menu. @param position on the screen, where the menu belongs.
    void speakerMenuRequested(const QPoint& position);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void createWidgets();
    void layOut();

    int m_segment = -1;
    QLabel* m_timecode = nullptr;
    STT_SpeakerTextEdit* m_speaker = nullptr;
    QToolButton* m_menuButton = nullptr;
};
