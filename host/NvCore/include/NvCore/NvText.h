#pragma once

#include "NvCore/Export.h"

#include <QByteArray>
#include <QString>

#include <functional>

/// A text that a user reads: it carries the untranslated key and is translated whenever it is turned into a string,
/// so that one text object follows a change of language. A value type; copies share their key.
class NVCORE_EXPORT NvText
{
public:
    NvText() = default;

    /// @param key the untranslated text in UTF-8; copied.
    explicit NvText(const char* key) : m_key(key) {}

    const QByteArray& key() const { return m_key; }

    bool isEmpty() const { return m_key.isEmpty(); }

    /// The text in the language that is installed now; the key itself where no translation is known.
    QString toQString() const;

    operator QString() const { return toQString(); } // NOLINT(google-explicit-constructor): stands for a string

    friend bool operator==(const NvText& left, const NvText& right) { return left.m_key == right.m_key; }

    friend bool operator!=(const NvText& left, const NvText& right) { return left.m_key != right.m_key; }

private:
    QByteArray m_key;
};

/// The process-wide translation lookup behind NvText. Safe from any thread.
///
/// Without an installed lookup, texts come from Qt's translators under one context, `Context`. Extract them with
/// `lupdate -tr-function-alias translate=stx_func`.
class NVCORE_EXPORT NvTextTranslation
{
public:
    /// Answers the translation of a key, or a null string where it has none. Called from any thread.
    using Lookup = std::function<QString(const QByteArray& key)>;

    static constexpr const char* Context = "Stratacut";

    NvTextTranslation() = delete;

    /// Replaces the lookup; an empty one brings Qt's translators back.
    static void install(Lookup lookup);

    /// The installed lookup's answer; where it has none, that of Qt's translators, which fall back to the key.
    static QString translate(const QByteArray& key);
};

/// Marks a literal as a text for the user and translates it when it is used: `label->setText(stx_func("Cancel"))`.
NVCORE_EXPORT NvText stx_func(const char* key);
