// host/talc_exception.h — the exceptions of the foundation library.
//
// Only one is raised by this library: `NullInterfaceException`, when an empty
// work-item reference is dereferenced. Both classes carry a static message
// text, so constructing and copying them never allocates.
#pragma once

#include <exception>

namespace Talc {

class Exception : public std::exception {
public:
    explicit Exception(const char* message) noexcept : message_(message) {}
    [[nodiscard]] const char* what() const noexcept override { return message_; }

private:
    const char* message_;  // static storage
};

class NullInterfaceException : public Exception {
public:
    NullInterfaceException() noexcept
        : Exception("A NULL interface pointer has been dereferenced.") {}
};

}  // namespace Talc
