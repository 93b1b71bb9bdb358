#pragma once

#include <QString>
#include <exception>

namespace MirlPlayer {

// Everything the Spotify service raises derives from SpotifyError. Callers show
// `localizedDescription()` unless `isCancellation()`: a cancellation is never shown.
class SpotifyError : public std::exception {
public:
    virtual QString localizedDescription() const = 0;
    virtual bool isCancellation() const { return false; }
    const char* what() const noexcept override { return "Spotify error"; }
};

// A failure meant for the user; `message` is a finished sentence.
class SpotifyFailure : public SpotifyError {
public:
    explicit SpotifyFailure(QString text)
        : message(std::move(text)) {}
    QString localizedDescription() const override { return message; }
    QString message;
};

// The work belonged to a session that has since been reset, or was called off.
class SpotifyCancellation : public SpotifyError {
public:
    QString localizedDescription() const override { return QStringLiteral("Cancelled."); }
    bool isCancellation() const override { return true; }
};

// A failure of the network or of the data format, raised as the system reported it.
class SpotifySystemError : public SpotifyError {
public:
    explicit SpotifySystemError(QString text)
        : description(std::move(text)) {}
    QString localizedDescription() const override { return description; }
    QString description;
};

} // namespace MirlPlayer
