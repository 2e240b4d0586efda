#pragma once

#include <QString>

#include <optional>
#include <utility>
#include <variant>

namespace korvel {

// How a failure is shown to the user: the message box title and icon go with the text,
// so every front end (message box, stderr) reports it the same way.
enum class FailureKind {
    ReadError,       // "Read Error", critical icon
    UnexpectedError, // "Unexpected Error", critical icon
    FatalError,      // "Fatal Error", critical icon
    WriteError,      // a file could not be saved; the old content is intact
    Refused,         // the input was refused (bad argument, missing entry...)
    ChangedOnDisk,   // a save found the file changed by another program since it was read; nothing
                     // was written
};

struct Failure {
    FailureKind kind = FailureKind::UnexpectedError;
    QString message;

    QString title() const;
};

inline Failure readError(QString message) {
    return {FailureKind::ReadError, std::move(message)};
}
inline Failure unexpectedError(QString message) {
    return {FailureKind::UnexpectedError, std::move(message)};
}
inline Failure writeError(QString message) {
    return {FailureKind::WriteError, std::move(message)};
}
inline Failure refused(QString message) {
    return {FailureKind::Refused, std::move(message)};
}
inline Failure changedOnDisk(QString message) {
    return {FailureKind::ChangedOnDisk, std::move(message)};
}

// A value or the failure that prevented it.
template <typename T> class Result {
public:
    Result(T value) : m_data(std::move(value)) {}
    Result(Failure failure) : m_data(std::move(failure)) {}

    bool ok() const { return m_data.index() == 0; }
    explicit operator bool() const { return ok(); }

    T& value() { return std::get<0>(m_data); }
    const T& value() const { return std::get<0>(m_data); }
    T& operator*() { return value(); }
    const T& operator*() const { return value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    const Failure& failure() const { return std::get<1>(m_data); }

private:
    std::variant<T, Failure> m_data;
};

// Success or the failure; for operations without a value.
class Status {
public:
    Status() = default;
    Status(Failure failure) : m_failure(std::move(failure)) {}

    bool ok() const { return !m_failure.has_value(); }
    explicit operator bool() const { return ok(); }
    const Failure& failure() const { return *m_failure; }

private:
    std::optional<Failure> m_failure;
};

} // namespace korvel
