#include "ParamTitle.h"

#include "FamilyStyle.h"
#include "TitleColumn.h"

#include "NvCore/NvText.h"
#include "ViewDeckQt/PaletteManager.h"

#include <QEvent>
#include <QHelpEvent>
#include <QPainter>
#include <QShortcut>
#include <QStyleOption>
#include <QToolTip>

namespace ViewDeckQt
{

namespace
{
constexpr int markArea = 12;
constexpr int markSize = 6;

QString withoutMnemonic(QString text)
{
    for (int at = text.indexOf(QLatin1Char('&')); at >= 0; at = text.indexOf(QLatin1Char('&'), at + 1))
        text.remove(at, 1);
    return text;
}
} // namespace

ParamTitle::ParamTitle(const QString& text, QWidget* parent) : QLabel(text, parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QString ParamTitle::plainText() const
{
    return withoutMnemonic(text());
}

void ParamTitle::setField(QWidget* field)
{
    setBuddy(field);
    QString name = plainText();
    if (name.endsWith(QLatin1Char(':')))
        name.chop(1);
    field->setAccessibleName(name);
}

bool ParamTitle::hasOwnMnemonic() const
{
    return !QKeySequence::mnemonic(text()).isEmpty();
}

QChar ParamTitle::mnemonic() const
{
    const int own = hasOwnMnemonic() ? text().indexOf(QLatin1Char('&')) + 1 : m_mnemonicAt;
    return own >= 0 && own < text().size() ? text().at(own).toUpper() : QChar();
}

QString ParamTitle::markedText() const
{
    QString marked = text();
    return m_mnemonicAt < 0 ? marked : marked.insert(m_mnemonicAt, QLatin1Char('&'));
}

void ParamTitle::chooseMnemonic(const QSet<QChar>& taken)
{
    const QString letters = text();
    int other = -1;
    for (int i = 0; i < letters.size(); ++i) {
        if (!letters.at(i).isLetter() || taken.contains(letters.at(i).toUpper()))
            continue;
        if (i == 0 || letters.at(i - 1).isSpace())
            return setMnemonicAt(i);
        if (other < 0)
            other = i;
    }
    setMnemonicAt(other);
}

void ParamTitle::setMnemonicAt(int position)
{
    if (m_mnemonicAt == position)
        return;
    m_mnemonicAt = position;
    if (!m_shortcut) {
        m_shortcut = new QShortcut(this);
        const auto goToField = [this] {
            if (buddy())
                buddy()->setFocus(Qt::ShortcutFocusReason);
        };
        connect(m_shortcut, &QShortcut::activated, this, goToField);
        connect(m_shortcut, &QShortcut::activatedAmbiguously, this, goToField);
    }
    m_shortcut->setKey(position < 0 ? QKeySequence() : QKeySequence(Qt::ALT + text().at(position).toUpper().unicode()));
    update();
}

void ParamTitle::setHighlighted(bool highlighted)
{
    if (m_highlighted == highlighted)
        return;
    m_highlighted = highlighted;
    const QString description = highlighted ? stx_func("A value is needed here.").toQString() : QString();
    setAccessibleDescription(description);
    if (buddy())
        buddy()->setAccessibleDescription(description);
    update();
}

QFont ParamTitle::boldFont() const
{
    QFont bold(font());
    bold.setBold(true);
    return bold;
}

QSize ParamTitle::sizeHint() const
{
    const QFontMetrics metrics(boldFont());
    return {markArea + metrics.horizontalAdvance(plainText()) + 1, FamilyStyle::fieldHeight(metrics)};
}

QSize ParamTitle::minimumSizeHint() const
{
    return {markArea, sizeHint().height()};
}

QRect ParamTitle::textRect() const
{
    return QStyle::visualRect(layoutDirection(), rect(), rect().adjusted(markArea, 0, 0, 0));
}

bool ParamTitle::event(QEvent* event)
{
    const QFontMetrics metrics(m_highlighted ? boldFont() : font());
    if (event->type() == QEvent::ToolTip && metrics.horizontalAdvance(plainText()) > textRect().width()) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), plainText(), this);
        return true;
    }
    const bool done = QLabel::event(event);
    switch (event->type()) {
    case QEvent::Polish:
    case QEvent::Show:
    case QEvent::FontChange:
    case QEvent::StyleChange:
        TitleColumn::join(this);
        break;
    default:
        break;
    }
    return done;
}

void ParamTitle::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QColor attention = Palette::PaletteManager::Instance().color(QStringLiteral("AttentionColor"));
    const QRect place = textRect();
    QPalette colors = palette();
    if (m_highlighted) {
        painter.setFont(boldFont());
        colors.setColor(QPalette::WindowText, attention);
    }
    const QFontMetrics metrics = painter.fontMetrics();
    const QString shown = metrics.elidedText(markedText(), Qt::ElideRight, place.width(), Qt::TextShowMnemonic);
    const bool fits = metrics.horizontalAdvance(plainText()) <= place.width();
    const Qt::Alignment alignment = QStyle::visualAlignment(layoutDirection(), Qt::AlignRight | Qt::AlignVCenter);
    style()->drawItemText(&painter, place, int(alignment) | Qt::TextShowMnemonic | Qt::TextSingleLine, colors,
                          isEnabled(), fits ? markedText() : shown, QPalette::WindowText);
    if (!m_highlighted)
        return;
    // A sign beside the text says the same to those who do not see the colour.
    const int textWidth = std::min(metrics.horizontalAdvance(plainText()), place.width());
    QRect mark(width() - textWidth - markArea + 2, (height() - markSize) / 2, markSize, markSize);
    mark = QStyle::visualRect(layoutDirection(), rect(), mark);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(attention);
    painter.drawEllipse(mark);
}

} // namespace ViewDeckQt
