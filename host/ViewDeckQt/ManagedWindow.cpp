#include "ViewDeckQt/ManagedWindow.h"

#include <QEvent>
#include <QScreen>
#include <QWidget>

#include <optional>

namespace ViewDeckQt
{

namespace
{
// Shown managed windows, the one activated last in front.
QList<QWidget*>& shownWindows()
{
    static QList<QWidget*> windows;
    return windows;
}

QMap<QString, QSize>& sizes()
{
    static QMap<QString, QSize> sizes;
    return sizes;
}

void bringToFront(QWidget* window)
{
    QList<QWidget*>& windows = shownWindows();
    windows.removeOne(window);
    windows.prepend(window);
}
} // namespace

class ManagedWindow::Watcher : public QObject
{
public:
    Watcher(QWidget& widget, ManagedWindow& owner) : m_widget(widget), m_owner(owner)
    {
        m_widget.installEventFilter(this);
    }

    ~Watcher() override { shownWindows().removeOne(&m_widget); }

    void setTitle(const NvText& title)
    {
        m_title = title;
        m_widget.setWindowTitle(title.toQString());
    }

    void rememberSize(const QString& name, const QSize& first)
    {
        m_sizeName = name;
        const QSize wanted = sizes().value(name, first);
        m_widget.resize(wanted.boundedTo(m_widget.screen()->availableSize()));
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::Show:
        case QEvent::WindowActivate:
            bringToFront(&m_widget);
            break;
        case QEvent::Hide:
            shownWindows().removeOne(&m_widget);
            if (!m_sizeName.isEmpty())
                sizes()[m_sizeName] = m_widget.size();
            break;
        case QEvent::LanguageChange:
            if (m_title)
                m_widget.setWindowTitle(m_title->toQString());
            break;
        case QEvent::PaletteChange:
            m_owner.onSkinChanged();
            break;
        default:
            break;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QWidget& m_widget;
    ManagedWindow& m_owner;
    std::optional<NvText> m_title;
    QString m_sizeName;
};

ManagedWindow::ManagedWindow(QWidget& widget) : m_watcher(std::make_unique<Watcher>(widget, *this)) {}

ManagedWindow::~ManagedWindow() = default;

void ManagedWindow::setManagedTitle(const NvText& title)
{
    m_watcher->setTitle(title);
}

QList<QWidget*> ManagedWindow::openWindows()
{
    return shownWindows();
}

QWidget* ManagedWindow::activeWindow()
{
    return shownWindows().value(0);
}

void ManagedWindow::rememberSize(const QString& name, const QSize& first)
{
    m_watcher->rememberSize(name, first);
}

QMap<QString, QSize> ManagedWindow::rememberedSizes()
{
    return sizes();
}

void ManagedWindow::setRememberedSizes(const QMap<QString, QSize>& remembered)
{
    sizes() = remembered;
}

void ManagedWindow::onSkinChanged() {}

} // namespace ViewDeckQt
