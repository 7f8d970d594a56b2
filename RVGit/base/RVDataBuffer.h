#pragma once

#include <cstddef>
#include <string_view>

#include "RVGit/base/RVExport.h"

/// The bytes of one output stream, contiguous, and kept once: a reader writes straight behind
/// what is there, and growth moves pages instead of copying bytes where the system can.
/// Growing may move the bytes, so views are to be taken once nothing more is added.
class RVGIT_EXPORT RVDataBuffer {
public:
    RVDataBuffer() = default;
    ~RVDataBuffer();
    RVDataBuffer(RVDataBuffer&& other) noexcept;
    RVDataBuffer& operator=(RVDataBuffer&& other) noexcept;

    [[nodiscard]] std::string_view view() const { return {bytes_, size_}; }
    [[nodiscard]] std::size_t size() const { return size_; }

    /// Room for at least `count` bytes behind the last one; throws std::bad_alloc.
    [[nodiscard]] char* reserveTail(std::size_t count);
    /// How many bytes there is room for behind the last one now.
    [[nodiscard]] std::size_t tailCapacity() const { return capacity_ - size_; }
    /// Counts `count` bytes, written to the reserved tail, as part of the buffer.
    void commitTail(std::size_t count) { size_ += count; }
    void append(std::string_view bytes);
    /// Gives unused room back; nothing more is to be added afterwards.
    void shrinkToFit();

private:
    char* bytes_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};
