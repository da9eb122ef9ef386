#pragma once

#include <QString>

#include <utility>

namespace desk::imf
{

/// Text for people and its language (RFC 5646); an empty language is not written and means English.
struct UserText {
    QString text;
    QString language;

    UserText() = default;

    UserText(QString value, QString tag = {}) // NOLINT(google-explicit-constructor)
        : text(std::move(value)), language(std::move(tag))
    {
    }

    bool isEmpty() const { return text.isEmpty(); }

    friend bool operator==(const UserText& a, const UserText& b)
    {
        return a.text == b.text && a.language == b.language;
    }
};

} // namespace desk::imf
