#pragma once

#include "StratacutUI/Export.h"

#include <QTextEdit>

/// The field that shows the speaker of a transcript line (STT_EntryWidget, its parent) and takes a new name for it.
///
/// It is read-only until the user double-clicks it or beginEditing is called. Return, Enter and the loss of the focus
/// then take the text, trimmed, as the new name; Escape brings the former one back.
class STRATACUTUI_EXPORT STT_SpeakerTextEdit : public QTextEdit
{
    Q_OBJECT

public:
    explicit STT_SpeakerTextEdit(QWidget* line);

    bool isEditing() const { return !isReadOnly(); }

    /// Shows a name that the program has. Nothing while the user edits, except in answer to a new name.
    void showName(const QString& name);

    /// Lets the user type, with the present name selected.
    void beginEditing();

    /// Ends editing without a new name; the former one shows again.
    void cancelEditing();

    QSize sizeHint() const override;

Q_SIGNALS:
    /// The user has given another name, which may be empty, to the speaker of the parent line's segment.
    void speakerNameChangedSignal(int segment, QString newName);

    /// The field is read-only again, whatever ended it.
    void editingEnded();

public Q_SLOTS:
    /// Fits tooltip and elision to the name that stands there now.
    void adjustSpeakerName();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;

private:
    void commit();
    void endEditing();
    void editableChanged();

    QString m_nameBefore;
    bool m_isElided = false;
    bool m_isCommitting = false;
};
