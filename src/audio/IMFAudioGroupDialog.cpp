#include "IMFAudioGroupDialog.h"

#include "IMFAudioGroupDelegate.h"
#include "IMFAudioTrackView.h"
#include "IMFTracksSortFilterModel.h"
#include "IMF_TrackGroupingManager.h"

#include "NvCore/NvText.h"
#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/MXE_Bridge.h"
#include "ViewDeckQt/DecorationManager.h"
#include "ViewDeckQt/ManagedMessageBox.h"
#include "ViewDeckQt/StyledButton.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using ViewDeckQt::StyledButton;
using ViewDeckQt::ManagedMessageBox::messageBox;

namespace
{
constexpr QSize firstSize(480, 520);
}

IMFAudioGroupDialog::IMFAudioGroupDialog(QWidget* parent, QAbstractItemModel* trackModel, const QJsonArray& groups)
    : ViewDeckQt::ManagedDialog<QDialog>(parent),
      m_tracks(new IMFTracksSortFilterModel(this)),
      m_trackModel(trackModel),
      m_groups(new IMFAudioGroupComboBox(this)),
      m_view(new IMFAudioTrackView(this)),
      m_masterFader(new QCheckBox(stx_func("Include Master Fader"), this)),
      m_input(groups),
      m_remark(new QLabel(this)),
      m_cancel(new StyledButton(stx_func("Cancel"), this)),
      m_save(new StyledButton(stx_func("Save"), this))
{
    setManagedTitle(stx_func("Audio Track Grouping"));
    // The host may fill the list anew while the dialog is open. The selection, which is told later, lets go of the
    // rows.
    const auto remember = [this] { m_missing += m_view->selectedTracks(); };
    connect(m_tracks, &QAbstractItemModel::rowsAboutToBeRemoved, this, remember);
    connect(m_tracks, &QAbstractItemModel::modelAboutToBeReset, this, remember);
    m_view->setModel(m_tracks);
    m_view->setItemDelegate(new IMFAudioGroupDelegate(m_view));
    // The dialog itself takes the focus for the list and hands the keys on to it.
    m_view->setFocusProxy(this);
    m_groups->setEditor(this);
    layOut();
    if (IMF_MXE_bridge::Instance()->isSequenceTrackModel(m_trackModel))
        m_tracks->setSourceModel(m_trackModel);
    else
        m_sequenceIsMissing = true;
    if (trackModel)
        m_masterFader->setToolTip(trackModel->property("masterFaderNote").toString());
    connectAll();
    if (!m_input.isEmpty())
        remark(m_groups->load(m_input));
    ViewDeckQt::DecorationManager::decorate(this);
    rememberSize(QStringLiteral("Audio Track Grouping"), firstSize);
    m_groups->setFocus();
}

IMFAudioGroupDialog::~IMFAudioGroupDialog() = default;

void IMFAudioGroupDialog::layOut()
{
    m_groups->setObjectName(QStringLiteral("m_groups"));
    m_view->setObjectName(QStringLiteral("m_tracks"));
    m_masterFader->setObjectName(QStringLiteral("m_includeMasterFader"));
    m_remark->setObjectName(QStringLiteral("m_remark"));
    m_cancel->setObjectName(QStringLiteral("m_cancel"));
    m_save->setObjectName(QStringLiteral("m_save"));
    m_save->setDefault(true);
    m_masterFader->setContentsMargins(3, 0, 0, 0);
    m_remark->setTextFormat(Qt::PlainText);
    m_remark->setWordWrap(true);
    m_remark->hide();
    auto* group = new QLabel(stx_func("Group"));
    group->setBuddy(m_groups);
    auto* tracks = new QLabel(stx_func("Timeline Tracks"));
    tracks->setBuddy(m_view);
    m_groups->setAccessibleName(group->text());
    m_view->setAccessibleName(tracks->text());

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_remark, 1);
    buttons->addStretch();
    buttons->addWidget(m_cancel);
    buttons->addWidget(m_save);
    auto* layout = new QVBoxLayout(this);
    for (QWidget* widget :
         {static_cast<QWidget*>(group), static_cast<QWidget*>(m_groups), static_cast<QWidget*>(tracks),
          static_cast<QWidget*>(m_view), static_cast<QWidget*>(m_masterFader)})
        layout->addWidget(widget);
    layout->addLayout(buttons);
}

void IMFAudioGroupDialog::connectAll()
{
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &IMFAudioGroupDialog::markChanged);
    const auto findAgain = [this] { showTracks(m_view->selectedTracks() + m_missing); };
    connect(m_tracks, &QAbstractItemModel::rowsRemoved, this, findAgain);
    connect(m_tracks, &QAbstractItemModel::rowsInserted, this, findAgain);
    connect(m_tracks, &QAbstractItemModel::modelReset, this, findAgain);
    connect(m_tracks, &QAbstractItemModel::dataChanged, this, [this, findAgain] {
        if (!m_missing.isEmpty())
            findAgain();
    });
    connect(m_masterFader, &QCheckBox::stateChanged, this, &IMFAudioGroupDialog::markChanged);
    connect(m_groups, &IMFAudioGroupComboBox::profileChosen, this, &IMFAudioGroupDialog::apply);
    connect(m_cancel, &QPushButton::clicked, this, &IMFAudioGroupDialog::onCancel);
    connect(m_save, &QPushButton::clicked, this, &IMFAudioGroupDialog::onSave);
}

QStringList IMFAudioGroupDialog::selectedTracks() const
{
    return m_view->selectedTracks();
}

bool IMFAudioGroupDialog::includesMasterFader() const
{
    return m_masterFader->isChecked();
}

QStringList IMFAudioGroupDialog::otherSources() const
{
    return IMF_TrackGroupingManager(m_trackModel, {}).getSourceList();
}

void IMFAudioGroupDialog::apply(const AudioGroup& group)
{
    showTracks(group.tracks);
    m_masterFader->setChecked(group.includeMasterFader);
    m_changed = false;
    m_groups->setAccessibleDescription({});
    m_groups->update();
}

void IMFAudioGroupDialog::showTracks(const QStringList& names)
{
    m_missing = m_view->selectTracks(names);
    remark({});
    if (!m_missing.isEmpty())
        remark({stx_func("Not in the sequence, left out when you save: %1.").toQString().arg(m_missing.join(", "))});
}

void IMFAudioGroupDialog::markChanged()
{
    m_changed = true;
    m_groups->setAccessibleDescription(stx_func("Changed"));
    m_groups->update();
}

void IMFAudioGroupDialog::remark(const QStringList& lines)
{
    m_remark->setText(lines.join(QLatin1Char('\n')));
    m_remark->setVisible(!lines.isEmpty());
}

void IMFAudioGroupDialog::showEvent(QShowEvent* event)
{
    ViewDeckQt::ManagedDialog<QDialog>::showEvent(event);
    // Once the dialog stands, so that the box stands in front of it.
    if (std::exchange(m_sequenceIsMissing, false))
        QTimer::singleShot(0, this, &IMFAudioGroupDialog::warnOfMissingSequence);
}

void IMFAudioGroupDialog::warnOfMissingSequence()
{
    messageBox(this, QMessageBox::Warning, {}, stx_func("Sequence for this CPL was not found. Track list is empty."),
               QMessageBox::Ok, QMessageBox::Ok);
}

void IMFAudioGroupDialog::onCancel()
{
    const QPointer<IMFAudioGroupDialog> alive(this);
    const QMessageBox::StandardButton answer = messageBox(
        this, QMessageBox::Question, {}, stx_func("Are you sure you want to close this window without saving?"),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (alive && answer == QMessageBox::Yes)
        reject();
}

void IMFAudioGroupDialog::onSave()
{
    const QPointer<IMFAudioGroupDialog> alive(this);
    m_groups->save();
    if (!alive)
        return;
    m_result = m_groups->profiles();
    accept();
}

void IMFAudioGroupDialog::closeEvent(QCloseEvent* event)
{
    event->ignore();
    onCancel();
}

void IMFAudioGroupDialog::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cancel))
        return onCancel();
    const bool confirms = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (confirms || !hasFocus())
        return ViewDeckQt::ManagedDialog<QDialog>::keyPressEvent(event);
    handOn(event);
}

void IMFAudioGroupDialog::keyReleaseEvent(QKeyEvent* event)
{
    if (hasFocus())
        handOn(event);
}

void IMFAudioGroupDialog::handOn(QEvent* event)
{
    // Not by way of the application: what the list leaves would come back here, its parent.
    static_cast<QObject*>(m_view)->event(event);
}

void IMFAudioGroupDialog::focusInEvent(QFocusEvent* event)
{
    ViewDeckQt::ManagedDialog<QDialog>::focusInEvent(event);
    if (!m_view->currentIndex().isValid())
        m_view->setCurrentIndex(m_tracks->index(0, 0));
    m_view->viewport()->update();
}

void IMFAudioGroupDialog::focusOutEvent(QFocusEvent* event)
{
    ViewDeckQt::ManagedDialog<QDialog>::focusOutEvent(event);
    m_view->viewport()->update();
}

bool IMFAudioGroupDialog::focusNextPrevChild(bool next)
{
    QWidget* const stops[] = {m_groups, this, m_masterFader, m_cancel, m_save};
    const auto* const here = std::find(std::begin(stops), std::end(stops), focusWidget());
    const int count = int(std::size(stops));
    const int place = here == std::end(stops) ? count - 1 : int(here - std::begin(stops));
    stops[(place + (next ? 1 : count - 1)) % count]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}
