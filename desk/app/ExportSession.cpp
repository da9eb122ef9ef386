#include "desk/app/ExportSession.h"

#include "desk/app/Console.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_Controller.h"
#include "StratacutUI/IMF_DataParser.h"
#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/ManagedMessageBox.h"
#include "desk/media/Sequence.h"
#include "desk/services/FolderName.h"
#include "desk/services/MediaEngine.h"
#include "desk/services/OutputFormat.h"
#include "desk/services/SettingsStorage.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLocale>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <csignal>

namespace desk::app
{

namespace
{
std::atomic<bool> interrupted{false};

void onInterrupt(int)
{
    interrupted = true;
}

/// Whatever ends the terminal ends the export in order, unless the user has asked for more (nohup). Nobody listening to
/// the progress is no reason to end.
void catchSignals()
{
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onInterrupt);
    if (std::signal(SIGHUP, onInterrupt) == SIG_IGN)
        std::signal(SIGHUP, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

Error said(const QStringList& messages)
{
    return {{}, {}, {}, messages.isEmpty() ? QStringLiteral("the package manager refused") : messages.join(' '), {}};
}

/// The package manager's own words stand alone; ours name file, item and next step.
QString worded(const Error& error)
{
    return error.next.isEmpty() && error.file.isEmpty() ? error.what : error.sentence();
}

QString duration(double seconds)
{
    const qint64 whole = qint64(seconds + 0.5);
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

QString progressText(const services::ExportProgress& progress)
{
    const QLocale locale;
    QString text =
        QStringLiteral("%1 of %2 frames, %3, %4 frames/s")
            .arg(QString::number(progress.frames), QString::number(progress.totalFrames),
                 locale.formattedDataSize(progress.bytes), locale.toString(progress.framesPerSecond, 'f', 1));
    if (progress.secondsLeft >= 0)
        text += QStringLiteral(", %1 left").arg(duration(progress.secondsLeft));
    return text;
}

const QStringList& textKeys()
{
    static const QStringList keys{ImfDict::Issuer,       ImfDict::Creator,
                                  ImfDict::Annotation,   ImfDict::ContentOriginator,
                                  ImfDict::ContentTitle, ImfDict::ContentKind};
    return keys;
}

Error settingError(const QString& key, const QString& what, const QString& next)
{
    return {{}, QStringLiteral("--set ") + key, {}, what, next};
}

Error notOffered(const QPair<QString, QString>& setting, const QStringList& choices)
{
    return settingError(setting.first, QStringLiteral("the output does not offer \"%1\"").arg(setting.second),
                        QStringLiteral("choose one of \"%1\"").arg(choices.join(QStringLiteral("\", \""))));
}

/// A setting stands behind those that its choices depend on.
int placeOf(const QString& key)
{
    const int place = services::OutputFormat::keys().indexOf(key);
    return place < 0 ? services::OutputFormat::keys().size() : place;
}
} // namespace

ExportSession::ExportSession(const ExportRequest& request)
    : m_request(request),
      m_profile(request.profile),
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
    for (const QString& path : qAsConst(m_request.media)) {
        const auto sequence = media::openSequence(path);
        if (!sequence)
            return sequence.error();
        m_library.add(*sequence);
        m_sequences += sequence->id;
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
    connect(&m_output, &services::PackageOutput::progressed, this,
            [this](const QByteArray&, const services::ExportProgress& progress) { showProgress(progress); });
    auto settings =
        std::make_unique<services::SettingsStorage>(m_request.profile.isEmpty() ? QString() : m_profile.settingsFile());
    m_settings = settings.get();
    tell(settings->takeNotices());
    m_model = std::make_unique<IMF_PackageMgrQtModel>();
    m_output.follow(m_model.get());
    m_model->initialize(&m_output, std::move(settings));
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
    QStringList kinds = ImfDict::contentKindLabels();
    for (const QString& label : ImfDict::contentKindLabels())
        kinds += ImfDict::contentKindCode(label);
    for (const auto& setting : m_request.settings) {
        if (setting.first == QLatin1String(ImfDict::ContentKind) && !kinds.contains(setting.second))
            return notOffered(setting, ImfDict::contentKindLabels().mid(1));
    }
    return {};
}

Status ExportSession::applyTexts()
{
    QVector<QPair<QString, QString>> texts;
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

Status ExportSession::applyToComposition(const QModelIndex& cpl, const QPair<QString, QString>& setting)
{
    const auto fail = [&setting](const QString& what, const QString& next) {
        return settingError(setting.first, what, next);
    };
    if (setting.first == QLatin1String(ImfDict::MultipleAudioMix)) {
        const QJsonDocument mix = QJsonDocument::fromJson(setting.second.toUtf8());
        if (!mix.isObject())
            return fail(QStringLiteral("the value is no JSON object"), QStringLiteral("give a multi-mix document"));
        if (!JSON::VerifyMultiMix(mix.object(), false))
            return fail(QStringLiteral("the value is no multi-mix document"),
                        QStringLiteral("give the lists \"%1\", \"%2\" and \"%3\"")
                            .arg(QLatin1String(ImfDict::AudioMapping), QLatin1String(ImfDict::TrackGroups),
                                 QLatin1String(ImfDict::AllActiveTracks)));
        m_model->setData(cpl, mix.object(), IMF_PackageMgrQtModel::MultiMixRole);
        return {};
    }
    const QJsonObject document = IMF_PackageMgrQtModel::MetadataJsonFromIndex(cpl);
    for (const char* section : {ImfDict::Video, ImfDict::Audio}) {
        const QJsonValue parameter = document[QLatin1String(section)].toObject()[setting.first];
        const QJsonArray choices = parameter.toObject()[QLatin1String(ImfDict::values)].toArray();
        if (choices.isEmpty())
            continue;
        if (!choices.contains(setting.second)) {
            QStringList names;
            for (const QJsonValue& choice : choices)
                names += choice.toString();
            return notOffered(setting, names);
        }
        write(cpl, setting.first.toLatin1(), setting.second);
        return {};
    }
    return fail(QStringLiteral("there is no such parameter"),
                QStringLiteral("choose one of %1")
                    .arg((services::OutputFormat::keys() + QStringList{ImfDict::MultipleAudioMix} + textKeys())
                             .join(QStringLiteral(", "))));
}

Status ExportSession::applySettings()
{
    QVector<QPair<QString, QString>> settings;
    for (const auto& setting : qAsConst(m_request.settings)) {
        if (!textKeys().contains(setting.first))
            settings += setting;
    }
    std::stable_sort(settings.begin(), settings.end(),
                     [](const auto& a, const auto& b) { return placeOf(a.first) < placeOf(b.first); });
    for (int row = 0; row < m_model->rowCount(imp()); ++row) {
        for (const auto& setting : qAsConst(settings)) {
            Status applied = applyToComposition(m_model->index(row, 0, imp()), setting);
            if (!applied)
                return applied;
        }
    }
    return {};
}

void ExportSession::showProgress(const services::ExportProgress& progress)
{
    constexpr qint64 plainInterval = 5000;
    const bool last = progress.frames == progress.totalFrames;
    if (console::isTerminal())
        return console::statusLine(progressText(progress));
    if (!last && m_sinceLine.isValid() && m_sinceLine.elapsed() < plainInterval)
        return;
    m_sinceLine.start();
    console::note(progressText(progress));
}

int ExportSession::commit()
{
    QEventLoop loop;
    bool completed = false;
    connect(m_model->getIMFController(), &IMF_Controller::commitCompleted, &loop, [&] {
        completed = true;
        loop.quit();
    });
    QTimer watch;
    const QByteArray id = IMF_PackageMgrQtModel::ComponentIDFromIndex(delivery());
    connect(&watch, &QTimer::timeout, &loop, [&] {
        if (interrupted && !std::exchange(m_cancelled, true))
            m_output.cancel(id);
        if (!m_messages.isEmpty())
            loop.quit();
    });
    catchSignals();
    watch.start(50);
    m_model->getIMFController()->onCommit({delivery()});
    if (m_messages.isEmpty())
        loop.exec();
    console::endStatusLine();
    if (!completed || !m_messages.isEmpty()) {
        console::error(worded(said(m_messages)));
        return m_cancelled ? exitCode::cancelled : exitCode::failure;
    }
    return exitCode::success;
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
                            &ExportSession::applyTexts, &ExportSession::applySettings}) {
        if (done)
            done = (this->*step)();
    }
    if (!done)
        console::error(worded(done.error()));
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
