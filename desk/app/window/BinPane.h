#pragma once

#include <QListView>
#include <QStringList>
#include <QWidget>

class QLabel;
class QPushButton;
class QStackedWidget;

namespace desk::app
{

class BinModel;
class MediaLoader;

/// The list of sequences. Its drags leave the list as it is, whatever becomes of them.
class BinView : public QListView
{
    Q_OBJECT

public:
    explicit BinView(QWidget* parent = nullptr);

    QStringList selectedIds() const;

signals:
    void removeAsked();
    /// Enter or a double click.
    void openAsked();

protected:
    void startDrag(Qt::DropActions actions) override;
    void keyPressEvent(QKeyEvent* event) override;
};

/// The bin: the list with its buttons, and an invitation while it is empty. Takes files from a file manager.
class BinPane : public QWidget
{
    Q_OBJECT

public:
    /// Neither is owned; both must outlive the pane.
    BinPane(BinModel* model, MediaLoader* loader, QWidget* parent = nullptr);

    BinView& view() const { return *m_view; }

signals:
    void addAsked();
    void removeAsked();
    void addToPackageAsked();
    void openAsked();
    void filesDropped(const QStringList& paths);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void createWidgets(BinModel* model);
    QWidget* createInvitation();
    void layOut();
    void connectAll(BinModel* model, MediaLoader* loader);
    void refresh();

    BinView* m_view = nullptr;
    QStackedWidget* m_stack = nullptr;
    QPushButton* m_add = nullptr;
    QPushButton* m_use = nullptr;
    QPushButton* m_remove = nullptr;
    QLabel* m_count = nullptr;
    QLabel* m_reading = nullptr;
};

} // namespace desk::app
