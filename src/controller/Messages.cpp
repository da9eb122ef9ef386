#include "Messages.h"

#include "ViewDeckQt/ManagedMessageBox.h"

void Messages::show(QMessageBox::Icon icon, const QString& text)
{
    ViewDeckQt::ManagedMessageBox::messageBox(nullptr, icon, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

bool Messages::showIfFailed(const IMFO_Bridge::IMFO_Error_t& error)
{
    if (error.isError())
        show(QMessageBox::Critical, error.message());
    return error.isError();
}
