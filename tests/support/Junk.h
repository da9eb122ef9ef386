#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

#include <random>

namespace support
{

/// Makes any JSON at all out of given keys and texts: wrong types, missing members, numbers that fit nowhere. Equal
/// seeds make equal documents.
class Junk
{
public:
    Junk(quint32 seed, QStringList keys, QStringList texts)
        : m_random(seed), m_keys(std::move(keys)), m_texts(std::move(texts))
    {
    }

    /// From 0 up to but not including `end`.
    int below(int end) { return static_cast<int>(m_random() % static_cast<unsigned>(end)); }

    QString key() { return m_keys.at(below(m_keys.size())); }

    QString text() { return m_texts.at(below(m_texts.size())); }

    /// @param depth how many arrays and objects may stand in each other.
    QJsonValue value(int depth)
    {
        switch (below(depth > 0 ? 6 : 4)) {
        case 0:
            return QJsonValue();
        case 1:
            return below(2) == 0;
        case 2:
            return below(20) == 0 ? 1e300 : below(100) - 50;
        case 3:
            return text();
        case 4:
            return array(depth - 1);
        default:
            return object(depth - 1);
        }
    }

    QJsonArray array(int depth)
    {
        QJsonArray elements;
        for (int i = below(4); i > 0; --i)
            elements.append(value(depth));
        return elements;
    }

    QJsonObject object(int depth)
    {
        QJsonObject members;
        for (const QString& key : qAsConst(m_keys)) {
            if (below(2) == 0)
                members[key] = value(depth);
        }
        return members;
    }

    /// Puts junk in the place of one member, here or further down.
    void damage(QJsonObject& object)
    {
        const QStringList members = object.keys();
        const QString key = members.isEmpty() ? this->key() : members.at(below(members.size()));
        QJsonObject inner = object[key].toObject();
        if (inner.isEmpty() || below(2) == 0) {
            object[key] = value(3);
            return;
        }
        damage(inner);
        object[key] = inner;
    }

private:
    std::mt19937 m_random;
    QStringList m_keys;
    QStringList m_texts;
};

} // namespace support
