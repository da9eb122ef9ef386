#include "NvCore/Toggles.h"

#include <QFile>
#include <QHash>
#include <QMutex>
#include <QMutexLocker>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>
#include <optional>

namespace
{
struct Default {
    const char* path;
    bool on;
};

constexpr Default defaults[] = {
    {"/Stratacut/IMFMultipleAudioMix", false},
    {"/Stratacut/IMFMCAMetadata", false},
};

struct Word {
    const char* text;
    bool on;
};

constexpr Word words[] = {
    {"on", true},   {"true", true},   {"yes", true}, {"1", true},
    {"off", false}, {"false", false}, {"no", false}, {"0", false},
};

struct State {
    QMutex mutex;
    QString fileName;
    QHash<QByteArray, bool> set;
    QHash<QByteArray, bool> defaults;
    QSet<QByteArray> reported;
};

State& state()
{
    static State instance;
    return instance;
}

void reportOnce(const QByteArray& path, const QByteArray& value, const QString& where)
{
    {
        const QMutexLocker guard(&state().mutex);
        QSet<QByteArray>& reported = state().reported;
        const QByteArray what = path + '=' + value + '@' + where.toUtf8();
        if (reported.contains(what))
            return;
        reported.insert(what);
    }
    qWarning("Toggle %s: \"%s\" in %s is not a value; write on or off", path.constData(), value.constData(),
             qUtf8Printable(where));
}

std::optional<bool> parse(const QByteArray& path, const QByteArray& value, const QString& where)
{
    const QByteArray lower = value.trimmed().toLower();
    const auto word = std::find_if(std::begin(words), std::end(words), [&](const Word& w) { return lower == w.text; });
    if (word != std::end(words))
        return word->on;
    reportOnce(path, value, where);
    return std::nullopt;
}

std::optional<bool> find(const QHash<QByteArray, bool>& values, const QByteArray& path)
{
    const QMutexLocker guard(&state().mutex);
    const auto found = values.constFind(path);
    return found == values.constEnd() ? std::nullopt : std::optional<bool>(*found);
}

std::optional<bool> fromHost(const QByteArray& path)
{
    return find(state().set, path);
}

std::optional<bool> fromHostsDefaults(const QByteArray& path)
{
    return find(state().defaults, path);
}

std::optional<bool> fromEnvironment(const QByteArray& path)
{
    QByteArray variable = "TGL" + path;
    std::replace_if(
        variable.begin(), variable.end(),
        [](char c) { return !((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')); }, '_');
    if (!qEnvironmentVariableIsSet(variable.constData()))
        return std::nullopt;
    return parse(path, qgetenv(variable.constData()), QString::fromLatin1(variable));
}

std::optional<bool> fromFile(const QByteArray& path)
{
    QFile file(TGL_ToggleFile());
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    std::optional<bool> answer;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        const int equals = line.indexOf('=');
        if (line.startsWith('#') || equals < 0 || line.left(equals).trimmed() != path)
            continue;
        if (const std::optional<bool> value = parse(path, line.mid(equals + 1).trimmed(), file.fileName()))
            answer = value;
    }
    return answer;
}

bool defaultOf(const QByteArray& path)
{
    const auto entry =
        std::find_if(std::begin(defaults), std::end(defaults), [&](const Default& d) { return path == d.path; });
    return entry != std::end(defaults) && entry->on;
}
} // namespace

bool TGL_GetToggle(const char* path)
{
    const QByteArray key(path);
    for (auto* place : {fromHost, fromEnvironment, fromFile, fromHostsDefaults}) {
        if (const std::optional<bool> value = place(key))
            return *value;
    }
    return defaultOf(key);
}

void TGL_SetToggle(const char* path, bool on)
{
    const QMutexLocker guard(&state().mutex);
    state().set.insert(path, on);
}

void TGL_ResetToggle(const char* path)
{
    const QMutexLocker guard(&state().mutex);
    state().set.remove(path);
}

void TGL_SetDefault(const char* path, bool on)
{
    const QMutexLocker guard(&state().mutex);
    state().defaults.insert(path, on);
}

QString TGL_ToggleFile()
{
    {
        const QMutexLocker guard(&state().mutex);
        if (!state().fileName.isEmpty())
            return state().fileName;
    }
    const QString named = qEnvironmentVariable("STRATACUT_TOGGLES");
    if (!named.isEmpty())
        return named;
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QLatin1String("/stratacut/toggles");
}

void TGL_SetToggleFile(const QString& fileName)
{
    const QMutexLocker guard(&state().mutex);
    state().fileName = fileName;
}
