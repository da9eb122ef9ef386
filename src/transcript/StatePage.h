#pragma once

#include <QWidget>

class QLabel;

/// What the transcript window shows in place of a text when there is none: a picture, a title and a sentence that says
/// why and what to do. It covers the widget that it was made over, which owns it.
class StatePage : public QWidget
{
    Q_OBJECT

public:
    enum class State {
        Text, // the page is hidden
        NothingLoaded,
        EmptyTranscript,
        HiddenClips,
        DatabaseOffline,
    };

    explicit StatePage(QWidget* over);

    void showState(State state);

    State state() const { return m_state; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void createWidgets();
    void layOut();
    void showTexts();

    State m_state = State::Text;
    QLabel* m_picture = nullptr;
    QLabel* m_title = nullptr;
    QLabel* m_sentence = nullptr;
};
