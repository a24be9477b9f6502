#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace talvenor {

/// The base of every error that a user may read.
///
/// The text is made when it is asked for and not when the error arises, so that it comes in the language
/// that is set at that moment. Errors are values: cheap to copy, free of references to their origin, and
/// may cross threads.
class LocalizedError : public std::exception
{
public:
    /// The text for the user, in the language set at the moment of the call. Any thread.
    [[nodiscard]] virtual QString errorDescription() const = 0;

    /// The same text in UTF-8, for logs and test reports. The pointer lives as long as this object and
    /// until the next call; not for use from two threads at once.
    [[nodiscard]] const char *what() const noexcept override;

private:
    mutable QByteArray m_what;
};

/// A failure that the operating system, a device or a library has reported.
///
/// `code` is the reporter's own number (an errno, a libav or libpulse code), for logs and for the few callers
/// that tell cases apart; `domain` says whose number it is.
class PlatformError : public LocalizedError
{
public:
    PlatformError(QString domain, int code, QString description);

    [[nodiscard]] QString errorDescription() const override { return m_description; }
    [[nodiscard]] const QString &domain() const { return m_domain; }
    [[nodiscard]] int code() const { return m_code; }

private:
    QString m_domain;
    int m_code;
    QString m_description;
};

/// The text for the user of any exception: a LocalizedError's description, else what a standard exception
/// says of itself, else a plain sentence. `error` must not be null.
[[nodiscard]] QString localizedDescription(const std::exception_ptr &error);

} // namespace talvenor
