#pragma once

#include "ViewDeckQt/ManagedWindow.h"

#include <utility>

namespace ViewDeckQt
{

/// A managed dialog: joins a dialog class (`QDialog`, `QMessageBox`) with ManagedWindow. Takes the arguments of any of
/// the base's constructors.
template <typename Base>
class ManagedDialog : public Base, public ManagedWindow
{
public:
    template <typename... Arguments>
    explicit ManagedDialog(Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), ManagedWindow(static_cast<QWidget&>(*this))
    {
    }
};

} // namespace ViewDeckQt
