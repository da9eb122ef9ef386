#include "desk/app/ExportSession.h"

#include "desk/app/CommitWait.h"
#include "desk/app/Console.h"
#include "desk/app/ItemSettings.h"
#include "desk/app/SoundDefaults.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/ManagedMessageBox.h"
#include "desk/media/Sequence.h"
#include "desk/services/AbsentWork.h"
#include "desk/services/AudioMapping.h"
#include "desk/services/FolderName.h"
#include "desk/services/MediaEngine.h"
#include "desk/services/OutputFormat.h"
#include "desk/services/SettingsStorage.h"
#include "desk/services/SoundPlan.h"

#include <QDir>
#include <QFileInfo>

namespace desk::app
{

namespace
{
Error said(const QStringList& messages)
{
    return {{}, {}, {}, messages.isEmpty() ? QStringLiteral("the package manager refused") : messages.join(' '), {}};
}

/// The package manager's own words stand alone; ours name file, item and next step.
QString worded(const Error& error)
{
    return error.next.isEmpty() && error.file.isEmpty() ? error.what : error.sentence();
}
} // namespace

ExportSession::ExportSession(const ExportRequest& request)
    : m_request(request),
      m_profile(request.profile),
      m_lock(m_profile),
      m_library(request.profile.isEmpty() ? QString() : m_profile.binFile()),
      m_output(&m_library)
{
}

ExportSession::~ExportSession()
{
    ViewDeckQt::ManagedMessageBox::setPresenter({});
}

void ExportSession::tell(const QStringList& notices) const
{
    for (const QString& notice : notices)
        console::note(notice);
}

Status ExportSession::openMedia()
{
    Status claimed = m_request.profile.isEmpty() ? Status() : m_lock.claim();
    if (!claimed)
        return claimed;
    for (const QString& path : qAsConst(m_request.media)) {
        const auto sequence = media::openSequence(path);
        if (!sequence)
            return sequence.error();
        m_library.add(*sequence);
        m_sequences += sequence->id;
        tell(sequence->notices);
        if (sequence->picture && services::words::frameRate(sequence->frameRate).isEmpty())
            console::note(QStringLiteral("%1 has %2 frames a second and is written at the nearest rate of the output.")
                              .arg(path)
                              .arg(sequence->frameRate.toDouble()));
        if (sequence->picture && sequence->picture->interlaced)
            console::note(QStringLiteral("%1 is interlaced; its frames are written as they are.").arg(path));
    }
    tell(m_library.takeNotices());
    return {};
}

Status ExportSession::installHost()
{
    ViewDeckQt::ManagedMessageBox::setPresenter([this](const ViewDeckQt::ManagedMessageBox::Request& request) {
        m_messages += request.text;
        return request.defaultButton;
    });
    IMF_MXE_bridge::Initialize(std::make_unique<services::MediaEngine>(&m_library));
    IMF_IMFO_bridge::Initialize(&m_output);
    m_output.setDefaultFolder(QDir(m_request.folder).absolutePath());
    m_output.setPadding(m_request.padding);
    m_output.setSoundChoice(soundChoice());
    auto settings =
        std::make_unique<services::SettingsStorage>(m_request.profile.isEmpty() ? QString() : m_profile.settingsFile());
    m_settings = settings.get();
    tell(settings->takeNotices());
    m_model = std::make_unique<IMF_PackageMgrQtModel>();
    m_output.follow(m_model.get());
    m_model->initialize(&m_output, std::move(settings));
    services::keepAbsentWork(*m_settings, *m_model);
    tell(m_output.removeLeftovers());
    // What saved work says about itself is no failure of this export.
    tell(std::exchange(m_messages, {}));
    return {};
}

Status ExportSession::makeFolder()
{
    QString there = m_request.folder;
    for (; !QFileInfo::exists(there) && there.size() > 1; there = QFileInfo(there).path())
        m_madeFolders += there;
    const bool isBlocked = !QFileInfo(there).isDir();
    if (!isBlocked && QDir().mkpath(m_request.folder))
        return {};
    return Error{m_request.folder,
                 {},
                 {},
                 isBlocked ? QStringLiteral("the folder cannot be made, for %1 is no folder").arg(there)
                           : QStringLiteral("the folder cannot be made"),
                 QStringLiteral("choose a place that you may write to")};
}

void ExportSession::removeMadeFolders() const
{
    for (const QString& folder : m_madeFolders) {
        if (!QDir().rmdir(folder))
            return;
    }
}

Status ExportSession::createDelivery()
{
    const int before = m_model->rowCount();
    QString name = m_request.deliveryName;
    if (name.isEmpty())
        name = m_library.find(m_sequences.first())->name;
    m_model->getIMFController()->onNewIMFDelivery(name, IMF_PackageMgr::Original);
    if (m_model->rowCount() == before)
        return said(m_messages);
    QString refusal;
    QMetaObject::invokeMethod(m_model->getIMFController(), "setPath", Q_RETURN_ARG(QString, refusal),
                              Q_ARG(QString, m_request.folder), Q_ARG(QModelIndex, delivery()));
    return refusal.isEmpty() ? Status() : said({refusal.simplified()});
}

Status ExportSession::createCompositions()
{
    m_model->addIMPNode(m_model->FromIndex(delivery()));
    if (!m_request.impName.isEmpty())
        m_model->setData(imp(), m_request.impName);
    m_model->createCPLFromMobs(m_sequences, imp());
    const bool complete = m_messages.isEmpty() && m_model->rowCount(imp()) == m_sequences.size();
    return complete ? Status() : said(m_messages);
}

void ExportSession::write(const QModelIndex& index, const char* key, const QString& value)
{
    m_model->setData(index, QVariant::fromValue(qMakePair(QString::fromLatin1(key), value)),
                     IMF_PackageMgrQtModel::MetadataRole);
}

Status ExportSession::checkTexts() const
{
    for (const Setting& setting : m_request.settings) {
        Status known = checkText(setting);
        if (!known)
            return known;
    }
    return {};
}

Status ExportSession::applyTexts()
{
    QVector<Setting> texts;
    if (!m_request.issuer.isEmpty())
        texts += {QLatin1String(ImfDict::Issuer), m_request.issuer};
    if (!m_request.title.isEmpty())
        texts += {QLatin1String(ImfDict::ContentTitle), m_request.title};
    for (const auto& setting : qAsConst(m_request.settings)) {
        if (textKeys().contains(setting.first))
            texts += setting;
    }
    for (const auto& text : qAsConst(texts)) {
        const QByteArray key = text.first.toLatin1();
        // An item that has no such text leaves it out.
        write(delivery(), key, text.second);
        write(imp(), key, text.second);
        for (int row = 0; row < m_model->rowCount(imp()); ++row)
            write(m_model->index(row, 0, imp()), key, text.second);
    }
    return {};
}

Status ExportSession::applySettings()
{
    QVector<Setting> settings;
    for (const auto& setting : qAsConst(m_request.settings)) {
        if (!textKeys().contains(setting.first))
            settings += setting;
    }
    sortByDependence(settings);
    for (int row = 0; row < m_model->rowCount(imp()); ++row) {
        for (const auto& setting : qAsConst(settings)) {
            Status applied = applyParameter(*m_model, m_model->index(row, 0, imp()), setting);
            if (!applied)
                return applied;
        }
    }
    return {};
}

Status ExportSession::mapAudio()
{
    for (int row = 0; row < m_sequences.size() && !m_request.audio.isEmpty(); ++row) {
        Status applied =
            applyAudio(*m_model, m_model->index(row, 0, imp()), *m_library.find(m_sequences[row]), m_request.audio);
        if (!applied)
            return applied;
    }
    return {};
}

void ExportSession::tellSilentTracks() const
{
    for (int row = 0; row < m_sequences.size(); ++row) {
        const QModelIndex cpl = m_model->index(row, 0, imp());
        const auto sequence = m_library.find(m_sequences[row]);
        auto format = services::OutputFormat::fromJson(IMF_PackageMgrQtModel::CommitSettingsJsonFromIndex(cpl));
        const auto mapping = services::flatAudioMappingOf(IMF_PackageMgrQtModel::MetadataJsonFromIndex(cpl), *sequence);
        if (!mapping)
            continue;
        format.mapping = *mapping;
        const auto plans = services::planSound(*sequence, format);
        if (!plans)
            continue;
        const auto silent = services::silentTracks(*sequence, *plans);
        for (int track : silent)
            console::note(QStringLiteral("%1, track %2 (%3): it is left out of the mix; --map can keep it.")
                              .arg(sequence->path, sequence->audio[track].name, sequence->audio[track].label));
    }
}

int ExportSession::commit()
{
    CommitWait wait(&m_output, IMF_PackageMgrQtModel::ComponentIDFromIndex(delivery()));
    m_model->getIMFController()->onCommit({delivery()});
    const CommitWait::End end = wait.wait();
    if (end == CommitWait::End::Done && m_messages.isEmpty())
        return exitCode::success;
    console::error(worded(said(m_messages)));
    return end == CommitWait::End::Cancelled ? exitCode::cancelled : exitCode::failure;
}

void ExportSession::saveState()
{
    if (m_request.profile.isEmpty())
        return;
    m_model->getIMFController()->onSaveSettings();
    tell(m_settings->takeNotices());
}

int ExportSession::run()
{
    Status done = checkTexts();
    for (const auto step : {&ExportSession::openMedia, &ExportSession::installHost, &ExportSession::makeFolder,
                            &ExportSession::createDelivery, &ExportSession::createCompositions,
                            &ExportSession::applyTexts, &ExportSession::applySettings, &ExportSession::mapAudio}) {
        if (done)
            done = (this->*step)();
    }
    if (!done)
        console::error(worded(done.error()));
    else
        tellSilentTracks();
    const int code = done ? commit() : exitCode::failure;
    if (code != exitCode::success) {
        removeMadeFolders();
        return code;
    }
    saveState();
    console::out(delivery().data(IMF_PackageMgrQtModel::PathRole).toString());
    return code;
}

} // namespace desk::app
