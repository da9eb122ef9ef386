#include "desk/app/window/TrackDialog.h"

#include "ViewDeckQt/StyledButton.h"
#include "desk/app/window/PaneParts.h"

#include <QDialogButtonBox>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace desk::app
{

namespace
{
constexpr int dialogWidth = 420;

const QString clipHint = QStringLiteral(
    "Words of the ticked tracks are shown, and the next transcription of this clip listens to no others.");
const QString timelineHint = QStringLiteral(
    "Words that sound on the ticked tracks of this timeline are shown, and their clips are those that are "
    "transcribed with it.");
} // namespace

TrackDialog::TrackDialog(const media::Sequence& sequence, const QVector<int>& chosen, QWidget* parent)
    : ManagedDialog(parent), m_tracks(new QListWidget)
{
    setObjectName(QStringLiteral("TrackDialog"));
    setManagedTitle(NvText("Tracks of the Transcript"));
    m_tracks->setObjectName(QStringLiteral("m_tracks"));
    m_tracks->setAccessibleName(QStringLiteral("Tracks"));
    const QVector<services::SpeechTrack> tracks = services::speechTracks(sequence);
    for (const services::SpeechTrack& track : tracks) {
        auto* item = new QListWidgetItem(track.name, m_tracks);
        item->setData(Qt::UserRole, track.number);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        item->setCheckState(chosen.isEmpty() || chosen.contains(track.number) ? Qt::Checked : Qt::Unchecked);
    }
    m_tracks->setCurrentRow(0);
    layOut(sequence.isTimeline() ? timelineHint : clipHint);
}

QPushButton* TrackDialog::tickButton(const QString& text, Qt::CheckState state)
{
    auto* button = new ViewDeckQt::StyledButton(text);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, state] {
        for (int row = 0; row < m_tracks->count(); ++row)
            m_tracks->item(row)->setCheckState(state);
    });
    return button;
}

void TrackDialog::layOut(const QString& hint)
{
    auto* label = new QuietLabel(hint);
    label->setWordWrap(true);
    m_ok = new ViewDeckQt::StyledButton(QStringLiteral("OK"));
    m_ok->setDefault(true);
    auto* buttons = new QDialogButtonBox;
    buttons->addButton(tickButton(QStringLiteral("All"), Qt::Checked), QDialogButtonBox::ResetRole);
    buttons->addButton(tickButton(QStringLiteral("None"), Qt::Unchecked), QDialogButtonBox::ResetRole);
    buttons->addButton(m_ok, QDialogButtonBox::AcceptRole);
    buttons->addButton(new ViewDeckQt::StyledButton(QStringLiteral("Cancel")), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &TrackDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &TrackDialog::reject);
    connect(m_tracks, &QListWidget::itemChanged, this, [this] { m_ok->setEnabled(!ticked().isEmpty()); });
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(spacing::margin);
    layout->addWidget(label);
    layout->addWidget(m_tracks, 1);
    layout->addWidget(buttons);
    setMinimumWidth(dialogWidth);
    m_tracks->setFocus();
}

QVector<int> TrackDialog::ticked() const
{
    QVector<int> numbers;
    for (int row = 0; row < m_tracks->count(); ++row) {
        if (m_tracks->item(row)->checkState() == Qt::Checked)
            numbers += m_tracks->item(row)->data(Qt::UserRole).toInt();
    }
    return numbers;
}

QVector<int> TrackDialog::chosen() const
{
    const QVector<int> numbers = ticked();
    return numbers.size() == m_tracks->count() ? QVector<int>() : numbers;
}

} // namespace desk::app
