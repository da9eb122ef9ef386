#include "desk/app/window/TranscriptPane.h"

#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "ViewDeckQt/PaletteManager.h"
#include "desk/app/window/TrackDialog.h"
#include "desk/services/SpeechSound.h"
#include "desk/services/TranscriptExport.h"

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QVBoxLayout>

namespace desk::app
{

using media::Player;
using services::TranscriptWindowInfo;
using Window = STT_TranscriptManagerWindow;

namespace
{
constexpr int refreshInterval = 100;

QString filterOf(const speech::ExportFormatInfo& info)
{
    return QStringLiteral("%1 (*.%2)").arg(QLatin1String(info.name), QLatin1String(info.suffix));
}

/// With the name ending of the chosen format where the user gave none that is known.
QString fileWithSuffix(const QString& file, const QString& filter)
{
    if (services::exportFormatOf(file))
        return file;
    for (const speech::ExportFormatInfo& info : speech::exportFormats()) {
        if (filter == filterOf(info))
            return file + QLatin1Char('.') + QLatin1String(info.suffix);
    }
    return file;
}
} // namespace

TranscriptPane::TranscriptPane(services::TranscriptService& service, Player& source, Player& record, QWidget* parent)
    : QWidget(parent), m_info(new TranscriptWindowInfo(service, source, record))
{
    setObjectName(QStringLiteral("m_transcriptPane"));
    m_window = new Window(std::unique_ptr<ITranscriptWindowInfo>(m_info), this);
    m_window->setObjectName(QStringLiteral("m_transcript"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_window);
    setFocusProxy(m_window);
    connect(m_window, &Window::selectTracks, this, &TranscriptPane::askForTracks);
    followPlayer(source);
    followPlayer(record);
    followService(service);
}

TranscriptPane::~TranscriptPane() = default;

void TranscriptPane::followPlayer(Player& player)
{
    const auto isShown = [this, &player] { return &m_info->player() == &player; };
    connect(&player, &Player::aboutToPlay, this, [=](qint64 frame) {
        if (isShown())
            m_window->AboutToPlaySlot(long(frame));
    });
    connect(&player, &Player::nowPlaying, this, [=](qint64 frame) {
        if (isShown())
            m_window->NowPlayingSlot(long(frame));
    });
    connect(&player, &Player::positionChanged, this, [=, &player](qint64 frame) {
        if (!isShown())
            return;
        if (player.isPlaying())
            m_window->NowPlayingSlot(long(frame));
        else
            m_window->MonPosChangedSlot(frame);
    });
    connect(&player, &Player::donePlaying, this, [=](qint64 frame) {
        if (!isShown())
            return;
        m_window->DonePlayingSlot(long(frame));
        m_window->MonPosChangedSlot(frame);
    });
    connect(&player, &Player::marksChanged, this, [=, &player] {
        if (!isShown())
            return;
        m_window->MarkInChangedSlot(long(player.markIn()));
        m_window->MarkOutChangedSlot(long(player.markOut()));
    });
}

void TranscriptPane::followService(services::TranscriptService& service)
{
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(refreshInterval);
    connect(&m_refresh, &QTimer::timeout, m_window, [this] { m_window->TranscriptInfoChangedSlot(true); });
    connect(m_info, &TranscriptWindowInfo::changed, this, [this] {
        if (!m_refresh.isActive())
            m_refresh.start();
    });
    connect(m_info, &TranscriptWindowInfo::materialChanged, m_window,
            [this] { m_window->TranscriptInfoChangedSlot(false); });
    connect(m_info, &TranscriptWindowInfo::wished, this, &TranscriptPane::grant);
    connect(m_info, &TranscriptWindowInfo::refused, this, &TranscriptPane::failed);
    connect(&service, &services::TranscriptService::queued, this, [this] {
        // The button that was clicked goes; the focus must not pass to what cancels.
        if (m_window->isAncestorOf(QApplication::focusWidget()))
            m_window->setFocus();
    });
    connect(&service, &services::TranscriptService::imported, this,
            [this](const QString&, const QString& text) { emit noted(QStringLiteral("Imported %1").arg(text)); });
    connect(&service, &services::TranscriptService::importFailed, this,
            [this](const QString&, const QString& sentence) { emit failed(sentence); });
    connect(&service, &services::TranscriptService::exported, this,
            [this](const QStringList& files, const QString& note) {
                emit noted(QStringLiteral("Written: %1").arg(files.join(QStringLiteral(", "))) +
                           (note.isEmpty() ? note : QStringLiteral(" (%1)").arg(note)));
            });
    connect(&service, &services::TranscriptService::exportFailed, this, &TranscriptPane::failed);
}

void TranscriptPane::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        m_window->setLightSkin(Palette::PaletteManager::Instance().skin() == Palette::Skin::Light);
}

void TranscriptPane::grant(TranscriptWindowInfo::Wish wish)
{
    if (m_info->segments(0).empty())
        return emit noted(QStringLiteral("There is no transcript to export: transcribe or import one first"));
    switch (wish) {
    case TranscriptWindowInfo::Wish::ExportTranscript:
        return askForExport(QStringLiteral("Export Transcript"), false);
    case TranscriptWindowInfo::Wish::ExportSubcaptions:
        return askForExport(QStringLiteral("Export Subcaptions"), true);
    case TranscriptWindowInfo::Wish::CreateSubcaptions:
        return createSubcaptions();
    case TranscriptWindowInfo::Wish::CreateScript:
        return createScript();
    }
}

void TranscriptPane::askForExport(const QString& title, bool captionsOnly)
{
    QStringList filters;
    for (const speech::ExportFormatInfo& info : speech::exportFormats()) {
        if (info.hasCaptions || !captionsOnly)
            filters += filterOf(info);
    }
    const media::Sequence sequence = *m_info->player().sequence();
    auto* dialog = new QFileDialog(this, title, QFileInfo(sequence.path).path());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilters(filters);
    dialog->selectFile(sequence.name);
    connect(dialog, &QFileDialog::fileSelected, this, [this, dialog, sequence](const QString& file) {
        m_info->service().exportFiles(sequence, {fileWithSuffix(file, dialog->selectedNameFilter())});
    });
    dialog->open();
}

/// Captions for a player and for a package: SubRip and IMSC 1.1.
void TranscriptPane::createSubcaptions()
{
    const media::Sequence sequence = *m_info->player().sequence();
    auto* dialog = new QFileDialog(this, QStringLiteral("Folder for the Subcaptions (SubRip and IMSC 1.1)"),
                                   QFileInfo(sequence.path).path());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    connect(dialog, &QFileDialog::fileSelected, this, [this, sequence](const QString& folder) {
        const QString base = folder + QLatin1Char('/') + sequence.name;
        m_info->service().exportFiles(sequence, {base + QStringLiteral(".srt"), base + QStringLiteral(".ttml")});
    });
    dialog->open();
}

/// The text with timecodes and speakers, in the project's folder of scripts.
void TranscriptPane::createScript()
{
    QDir().mkpath(m_folder);
    const media::Sequence& sequence = *m_info->player().sequence();
    m_info->service().exportFiles(sequence, {m_folder + QLatin1Char('/') + sequence.name + QStringLiteral(".txt")});
}

void TranscriptPane::askForTracks()
{
    const auto& sequence = m_info->player().sequence();
    if (!sequence || services::speechTracks(*sequence).isEmpty())
        return emit noted(QStringLiteral("There is no sound to transcribe: load a clip or a timeline first"));
    auto* dialog = new TrackDialog(*sequence, m_info->service().chosenTracks(sequence->id), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog, id = sequence->id] {
        const auto& now = m_info->player().sequence();
        if (!now || now->id != id)
            return;
        const QString note = m_info->chooseTracks(dialog->chosen());
        if (!note.isEmpty())
            emit noted(note);
    });
    dialog->open();
}

void TranscriptPane::askForImport(const services::TranscriptService::Clip& clip)
{
    auto* dialog =
        new QFileDialog(this, QStringLiteral("Import a Transcript of %1").arg(clip.name), QFileInfo(clip.path).path(),
                        QStringLiteral("Transcripts (*.json *.srt *.vtt);;All files (*)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this, clip](const QString& file) { m_info->service().importFile(clip, file); });
    dialog->open();
}

} // namespace desk::app
