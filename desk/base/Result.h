#pragma once

#include <QString>

#include <utility>
#include <variant>

namespace desk
{

/// A failure as the user needs it: which file, which item in it, where, what is wrong and what to do next.
struct Error {
    /// Path of the file or folder; empty when none is concerned.
    QString file;
    /// The item inside the file: an asset identifier, an element, a track.
    QString item;
    /// The clause of a standard or the byte offset; empty when there is none.
    QString where;
    /// What is wrong, as a clause that starts lower case and has no full stop: "the file is cut after 1,024 bytes".
    QString what;
    /// The next step, as an imperative clause: "copy the file again".
    QString next;

    /// One sentence with every part that is set: "countdown.mxf, track 2 (offset 512): the index is cut; copy the file
    /// again."
    QString sentence() const
    {
        QString text;
        for (const QString* part : {&file, &item}) {
            if (!part->isEmpty())
                text += (text.isEmpty() ? QString() : QStringLiteral(", ")) + *part;
        }
        if (!where.isEmpty())
            text += (text.isEmpty() ? QStringLiteral("(") : QStringLiteral(" (")) + where + QLatin1Char(')');
        text += (text.isEmpty() ? QString() : QStringLiteral(": ")) + what;
        if (!next.isEmpty())
            text += QStringLiteral("; ") + next;
        return text + QLatin1Char('.');
    }
};

/// A value or the error that took its place.
template <class T>
class Result
{
public:
    Result(T value) : m_state(std::in_place_index<0>, std::move(value)) {} // NOLINT(google-explicit-constructor)

    Result(Error error) : m_state(std::in_place_index<1>, std::move(error)) {} // NOLINT(google-explicit-constructor)

    bool ok() const { return m_state.index() == 0; }

    explicit operator bool() const { return ok(); }

    /// Only when ok().
    T& value() { return std::get<0>(m_state); }

    const T& value() const { return std::get<0>(m_state); }

    T* operator->() { return &value(); }

    const T* operator->() const { return &value(); }

    T& operator*() { return value(); }

    const T& operator*() const { return value(); }

    /// Only when not ok().
    const Error& error() const { return std::get<1>(m_state); }

private:
    std::variant<T, Error> m_state;
};

/// An outcome without a value.
class [[nodiscard]] Status
{
public:
    Status() = default;

    Status(Error error) : m_failed(true), m_error(std::move(error)) {} // NOLINT(google-explicit-constructor)

    bool ok() const { return !m_failed; }

    explicit operator bool() const { return ok(); }

    const Error& error() const { return m_error; }

private:
    bool m_failed = false;
    Error m_error;
};

} // namespace desk
