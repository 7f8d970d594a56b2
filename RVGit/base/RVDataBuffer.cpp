#include "RVGit/base/RVDataBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace {

// One pipe's worth: the first read seldom needs a second reservation.
constexpr std::size_t minimumCapacity = std::size_t{64} << 10;

}  // namespace

RVDataBuffer::~RVDataBuffer() {
    std::free(bytes_);
}

RVDataBuffer::RVDataBuffer(RVDataBuffer&& other) noexcept
    : bytes_(std::exchange(other.bytes_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

RVDataBuffer& RVDataBuffer::operator=(RVDataBuffer&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
    return *this;
}

char* RVDataBuffer::reserveTail(std::size_t count) {
    if (capacity_ - size_ < count) {
        // Doubling costs address space alone: pages that are never written take no memory, and
        // realloc moves large blocks by remapping them.
        std::size_t wanted = std::max({size_ + count, capacity_ * 2, minimumCapacity});
        void* grown = std::realloc(bytes_, wanted);
        if (!grown)
            throw std::bad_alloc();
        bytes_ = static_cast<char*>(grown);
        capacity_ = wanted;
    }
    return bytes_ + size_;
}

void RVDataBuffer::append(std::string_view bytes) {
    if (bytes.empty())
        return;
    std::memcpy(reserveTail(bytes.size()), bytes.data(), bytes.size());
    commitTail(bytes.size());
}

void RVDataBuffer::shrinkToFit() {
    if (size_ == 0) {
        std::free(std::exchange(bytes_, nullptr));
        capacity_ = 0;
    } else if (void* shrunk = std::realloc(bytes_, size_)) {
        bytes_ = static_cast<char*>(shrunk);
        capacity_ = size_;
    }
}
