#include "StratacutUI/ImfDict.h"

#include <QHash>

#include <algorithm>
#include <iterator>

namespace
{
struct KindRow {
    const char* label;
    const char* code;
};

constexpr KindRow kinds[] = {
    {"Advertisement - ADV", "advertisement"},
    {"Episode - EPS", "episode"},
    {"Event - EVT", "event"},
    {"Feature - FTR", "feature"},
    {"Highlights - HLS", "highlights"},
    {"Public Service Announcement - PSA", "psa"},
    {"Rating - RTG", "rating"},
    {"Short - SHR", "short"},
    {"Teaser - TSR", "teaser"},
    {"Test - TST", "test"},
    {"Trailer - TLR", "trailer"},
    {"Transitional - XSN", "transitional"},
};

using Field = const char* KindRow::*;

// The other half of a row; a text that no row has stands for itself.
QString translate(const QString& text, Field from, Field to)
{
    const auto row = std::find_if(std::begin(kinds), std::end(kinds),
                                  [&](const KindRow& kind) { return text == QLatin1String(kind.*from); });
    return row == std::end(kinds) ? text : QString::fromLatin1((*row).*to);
}

QJsonObject makeObject(const QString& code)
{
    static const QJsonArray labels = QJsonArray::fromStringList(ImfDict::contentKindLabels());
    return {{QLatin1String(ImfDict::Scope), ImfDict::contentKindScope()},
            {QLatin1String(ImfDict::Value), code},
            {QLatin1String(ImfDict::values), labels}};
}

// One object a code, shared by all documents that hold it.
QHash<QString, QJsonObject> makeObjects()
{
    QHash<QString, QJsonObject> objects{{QString(), makeObject(QString())}};
    for (const KindRow& kind : kinds)
        objects.insert(QString::fromLatin1(kind.code), makeObject(QString::fromLatin1(kind.code)));
    return objects;
}
} // namespace

QString ImfDict::contentKindScope()
{
    static const QString scope = QStringLiteral("http://www.smpte-ra.org/schemas/2067-3/2013#content-kind");
    return scope;
}

QStringList ImfDict::contentKindLabels()
{
    QStringList labels{QString()};
    for (const KindRow& kind : kinds)
        labels += QString::fromLatin1(kind.label);
    return labels;
}

QString ImfDict::contentKindCode(const QString& labelOrCode)
{
    const QString text = labelOrCode.trimmed();
    return text.isEmpty() ? QString() : translate(text, &KindRow::label, &KindRow::code);
}

QString ImfDict::contentKindLabel(const QString& code)
{
    return translate(code, &KindRow::code, &KindRow::label);
}

QJsonObject ImfDict::contentKindObject(const QString& labelOrCode)
{
    static const QHash<QString, QJsonObject> objects = makeObjects();
    const QString code = contentKindCode(labelOrCode);
    const auto known = objects.constFind(code);
    return known == objects.constEnd() ? makeObject(code) : *known;
}
