#include "desk/app/window/PaneParts.h"

#include "ViewDeckQt/PaletteManager.h"

#include <QEvent>

namespace desk::app
{

QuietLabel::QuietLabel(const QString& text, QWidget* parent) : QLabel(text, parent)
{
    setTextFormat(Qt::PlainText);
    // Also where the background is that of a list.
    setForegroundRole(QPalette::WindowText);
    useQuietColor();
}

void QuietLabel::changeEvent(QEvent* event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !m_changing)
        useQuietColor();
}

void QuietLabel::useQuietColor()
{
    m_changing = true;
    QPalette own;
    own.setColor(QPalette::WindowText, Palette::PaletteManager::Instance().color(QStringLiteral("QuietFontColor")));
    setPalette(own);
    m_changing = false;
}

QLabel* paneTitle(const QString& text)
{
    auto* label = new QLabel(text);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

QLabel* invitation(const QString& text)
{
    auto* label = new QuietLabel(text);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setMargin(spacing::margin);
    return label;
}

} // namespace desk::app
