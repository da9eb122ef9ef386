#include "TitleColumn.h"

#include "ParamTitle.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAction>
#include <QEvent>
#include <QKeySequence>
#include <QLayout>
#include <QMenuBar>
#include <QSet>
#include <QSplitter>
#include <QStackedWidget>

#include <algorithm>

namespace ViewDeckQt
{

namespace
{
bool holdsPages(const QWidget* widget)
{
    return qobject_cast<const QStackedWidget*>(widget) || qobject_cast<const QSplitter*>(widget) ||
           qobject_cast<const QAbstractScrollArea*>(widget->parentWidget());
}

QWidget* pageOf(QWidget* widget)
{
    while (!widget->isWindow() && widget->parentWidget() && !holdsPages(widget->parentWidget()))
        widget = widget->parentWidget();
    return widget;
}

void addMnemonic(QSet<QChar>& letters, const QString& text)
{
    const QString keys = QKeySequence::mnemonic(text).toString(QKeySequence::PortableText);
    if (!keys.isEmpty())
        letters.insert(keys.at(keys.size() - 1).toUpper());
}

// What buttons and the menu bar of the window answer to.
QSet<QChar> mnemonicsOf(const QWidget* window)
{
    QSet<QChar> letters;
    const QList<QAbstractButton*> buttons = window->findChildren<QAbstractButton*>();
    for (const QAbstractButton* button : buttons)
        addMnemonic(letters, button->text());
    const QList<QMenuBar*> bars = window->findChildren<QMenuBar*>();
    for (const QMenuBar* bar : bars) {
        const QList<QAction*> menus = bar->actions();
        for (const QAction* menu : menus)
            addMnemonic(letters, menu->text());
    }
    return letters;
}

int leading(const QMargins& margins, const QWidget* widget)
{
    return widget->isRightToLeft() ? margins.right() : margins.left();
}

// Where the layout's item that is or contains the widget starts, on the side where lines start; -1 if it has none.
int marginTo(const QLayout* layout, const QWidget* widget)
{
    const int margin = leading(layout->contentsMargins(), widget);
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->widget() == widget)
            return margin;
        const int inner = item->layout() ? marginTo(item->layout(), widget) : -1;
        if (inner >= 0)
            return margin + inner;
    }
    return -1;
}

// Read from the layouts, not from geometry: contents of a collapsed section have none, and must not move the column
// when they appear.
int indentOf(const QWidget* widget, const QWidget* page)
{
    int indent = 0;
    for (; widget != page && widget->parentWidget(); widget = widget->parentWidget()) {
        const QWidget* parent = widget->parentWidget();
        const int margin = parent->layout() ? marginTo(parent->layout(), widget) : -1;
        indent += margin >= 0 ? margin + leading(parent->contentsMargins(), widget) : widget->x();
    }
    return indent;
}
} // namespace

TitleColumn::TitleColumn(QWidget* page) : QObject(page)
{
    page->installEventFilter(this);
}

QWidget* TitleColumn::page() const
{
    return static_cast<QWidget*>(parent());
}

TitleColumn* TitleColumn::of(QWidget* page)
{
    auto* column = page->findChild<TitleColumn*>(QString(), Qt::FindDirectChildrenOnly);
    return column ? column : new TitleColumn(page);
}

void TitleColumn::join(ParamTitle* title)
{
    TitleColumn* column = of(pageOf(title));
    const auto found = std::find(column->m_titles.begin(), column->m_titles.end(), title);
    if (found == column->m_titles.end())
        column->m_titles.emplace_back(title);
    column->alignLater();
}

bool TitleColumn::eventFilter(QObject* watched, QEvent* event)
{
    // Children are laid out and nothing is painted yet when a widget learns that it is shown.
    if (event->type() == QEvent::Show)
        align();
    if (event->type() == QEvent::Resize)
        alignLater();
    return QObject::eventFilter(watched, event);
}

void TitleColumn::alignLater()
{
    if (m_pending)
        return;
    m_pending = true;
    QMetaObject::invokeMethod(this, &TitleColumn::align, Qt::QueuedConnection);
}

void TitleColumn::align()
{
    m_pending = false;
    dropTitlesThatLeft();
    chooseMnemonics();
    std::vector<int> indents;
    int column = 0;
    for (const auto& title : m_titles) {
        indents.push_back(indentOf(title, page()));
        column = std::max(column, indents.back() + title->sizeHint().width());
    }
    column = std::min(column, std::max(page()->width() / 2, 80));
    for (size_t i = 0; i < m_titles.size(); ++i)
        m_titles[i]->setFixedWidth(std::max(column - indents[i], m_titles[i]->minimumSizeHint().width()));
}

void TitleColumn::dropTitlesThatLeft()
{
    const auto left = [this](const QPointer<ParamTitle>& title) { return !title || pageOf(title) != page(); };
    m_titles.erase(std::remove_if(m_titles.begin(), m_titles.end(), left), m_titles.end());
}

void TitleColumn::chooseMnemonics()
{
    QSet<QChar> taken = mnemonicsOf(page()->window());
    for (const auto& title : m_titles)
        if (title->hasOwnMnemonic())
            taken.insert(title->mnemonic());
    for (const auto& title : m_titles) {
        if (title->hasOwnMnemonic())
            continue;
        title->chooseMnemonic(taken);
        taken.insert(title->mnemonic());
    }
}

} // namespace ViewDeckQt
