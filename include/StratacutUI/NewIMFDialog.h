#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/IMF_PackageMgr.h"
#include "ViewDeckQt/ManagedDialog.h"

#include <QDialog>
#include <QString>

/// Asks whether a new deliverable is to be an IMF Original or an IMF Supplemental (ST 2067-2:2020). Run it modally; any
/// result but 0 is an answer. Made for one question.
class STRATACUTUI_EXPORT NewIMFDialog : public ViewDeckQt::ManagedDialog<QDialog>
{
public:
    explicit NewIMFDialog(QWidget* parent = nullptr);
    ~NewIMFDialog() override;

    /// The name that such a deliverable gets where the user gives none, translated. It need not be unique.
    static QString defaultName(IMF_PackageMgr::Version version);

    /// The new deliverable's default name; empty until one is chosen.
    QString name;
    IMF_PackageMgr::Version version = IMF_PackageMgr::Original;

private:
    void choose(IMF_PackageMgr::Version chosen);
};
