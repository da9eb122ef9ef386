#include "StratacutUI/NewIMFDialog.h"

#include "NvCore/NvText.h"
#include "ViewDeckQt/StyledButton.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace
{
using ViewDeckQt::StyledButton;

StyledButton* addButton(QHBoxLayout* row, const NvText& text, const char* name)
{
    auto* button = new StyledButton(text);
    button->setObjectName(QLatin1String(name));
    row->addWidget(button);
    return button;
}
} // namespace

NewIMFDialog::NewIMFDialog(QWidget* parent) : ViewDeckQt::ManagedDialog<QDialog>(parent)
{
    setManagedTitle(stx_func("New IMF"));
    auto* row = new QHBoxLayout;
    row->addStretch();
    StyledButton* cancel = addButton(row, stx_func("Cancel"), "cancelBtn");
    StyledButton* original = addButton(row, stx_func("Original"), "originalBtn");
    StyledButton* supplemental = addButton(row, stx_func("Supplemental"), "supplementalBtn");
    row->addStretch();
    original->setDefault(true);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 20);
    layout->addWidget(new QLabel(stx_func("Do you want to create a new IMF Original or Supplemental package?")));
    layout->addSpacing(16);
    layout->addLayout(row);

    connect(original, &QPushButton::clicked, this, [this] { choose(IMF_PackageMgr::Original); });
    connect(supplemental, &QPushButton::clicked, this, [this] { choose(IMF_PackageMgr::Supplemental); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    original->setFocus();
}

NewIMFDialog::~NewIMFDialog() = default;

QString NewIMFDialog::defaultName(IMF_PackageMgr::Version version)
{
    return version == IMF_PackageMgr::Supplemental ? stx_func("Untitled Supplemental") : stx_func("Untitled Original");
}

void NewIMFDialog::choose(IMF_PackageMgr::Version chosen)
{
    name = defaultName(chosen);
    version = chosen;
    accept();
}
