#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <utility>

#include "RVGit/base/RVExport.h"

/// Owns an open file descriptor, or none. Not for public headers.
class RVGIT_EXPORT RVDescriptor {
public:
    RVDescriptor() = default;
    explicit RVDescriptor(int number) : number_(number) {}
    RVDescriptor(RVDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    RVDescriptor& operator=(RVDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~RVDescriptor() { close(); }

    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    /// Writes all of the bytes; false, with errno set, if it cannot.
    [[nodiscard]] bool write(std::string_view bytes) const {
        while (!bytes.empty()) {
            const auto count = ::write(number_, bytes.data(), bytes.size());
            if (count >= 0)
                bytes.remove_prefix(static_cast<std::size_t>(count));
            else if (errno != EINTR)
                return false;
        }
        return true;
    }
    /// Hands the descriptor over, to be closed by the caller.
    [[nodiscard]] int release() { return std::exchange(number_, -1); }
    /// False, with errno set, if bytes that were written earlier could not be kept.
    bool close() {
        if (!isOpen())
            return true;
        // The descriptor is gone after an interruption too.
        return ::close(std::exchange(number_, -1)) == 0 || errno == EINTR;
    }

private:
    int number_ = -1;
};
