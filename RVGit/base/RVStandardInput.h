#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"

/// What a child process reads on its standard input: bytes that are fed through a pipe as fast
/// as the child takes them, after which the pipe is closed; or a file, opened for reading when
/// the child is launched, or already open. By default there is nothing to read.
///
/// A file has to be a regular one, and a link in its place is not followed: the launch fails.
class RVGIT_EXPORT RVStandardInput {
public:
    RVStandardInput() = default;
    [[nodiscard]] static RVStandardInput data(RVData bytes) {
        return RVStandardInput(Source(std::in_place_index<1>, std::move(bytes)));
    }
    [[nodiscard]] static RVStandardInput file(std::string path) {
        return RVStandardInput(Source(std::in_place_index<2>, std::move(path)));
    }
    /// A file that the caller has opened; it is closed with the last copy of this.
    [[nodiscard]] static RVStandardInput openFile(int descriptor);

    [[nodiscard]] const RVData* bytes() const { return std::get_if<1>(&source_); }
    [[nodiscard]] const std::string* filePath() const { return std::get_if<2>(&source_); }
    /// -1 if there is none.
    [[nodiscard]] int descriptor() const {
        const auto* file = std::get_if<3>(&source_);
        return file ? **file : -1;
    }

private:
    using Source = std::variant<std::monostate, RVData, std::string, std::shared_ptr<const int>>;
    explicit RVStandardInput(Source source) : source_(std::move(source)) {}
    Source source_;
};
