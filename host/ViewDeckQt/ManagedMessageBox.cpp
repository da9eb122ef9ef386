#include "ViewDeckQt/ManagedMessageBox.h"

#include "ViewDeckQt/ManagedDialog.h"

#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>

#include <algorithm>
#include <memory>

namespace
{
constexpr QMessageBox::StandardButton escapeOrder[] = {QMessageBox::Cancel, QMessageBox::No,      QMessageBox::Close,
                                                       QMessageBox::Abort,  QMessageBox::Discard, QMessageBox::Ok};

QMessageBox::StandardButton escapeAnswer(QMessageBox::StandardButtons buttons, QMessageBox::StandardButton otherwise)
{
    const auto found = std::find_if(std::begin(escapeOrder), std::end(escapeOrder),
                                    [buttons](QMessageBox::StandardButton button) { return buttons & button; });
    return found == std::end(escapeOrder) ? otherwise : *found;
}

ViewDeckQt::ManagedMessageBox::Presenter& presenter()
{
    static ViewDeckQt::ManagedMessageBox::Presenter current;
    return current;
}
} // namespace

void ViewDeckQt::ManagedMessageBox::keepOnScreen(QMessageBox& box)
{
    // A message box keeps its text at about this width where it can.
    constexpr int usualWidth = 500;
    constexpr double share = 0.7;
    auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    auto* layout = qobject_cast<QGridLayout*>(box.layout());
    const QSize room = box.screen()->availableSize();
    const int width = std::min(usualWidth, room.width() / 2);
    label->setWordWrap(true);
    if (!layout || label->heightForWidth(width) <= room.height() * share)
        return;
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setAccessibleName(box.text());
    area->setMinimumSize(width, int(room.height() * share));
    const std::unique_ptr<QLayoutItem> former(layout->replaceWidget(label, area));
    area->setWidget(label);
}

void ViewDeckQt::ManagedMessageBox::setPresenter(Presenter replacement)
{
    presenter() = std::move(replacement);
}

QMessageBox::StandardButton ViewDeckQt::ManagedMessageBox::messageBox(QWidget* parent, QMessageBox::Icon icon,
                                                                      const QString& title, const QString& text,
                                                                      QMessageBox::StandardButtons buttons,
                                                                      QMessageBox::StandardButton defaultButton)
{
    if (presenter())
        return presenter()({icon, title, text, buttons, defaultButton});
    const QMessageBox::StandardButton escape = escapeAnswer(buttons, defaultButton);
    // On the heap: the parent may be destroyed while the box runs, and takes the box with it.
    const QPointer<ManagedDialog<QMessageBox>> box = new ManagedDialog<QMessageBox>(icon, title, text, buttons, parent);
    box->setTextFormat(Qt::PlainText);
    box->setDefaultButton(defaultButton);
    box->setEscapeButton(escape);
    keepOnScreen(*box);
    box->exec();
    if (!box)
        return escape;
    const QMessageBox::StandardButton answer = box->standardButton(box->clickedButton());
    delete box;
    return answer == QMessageBox::NoButton ? escape : answer;
}
