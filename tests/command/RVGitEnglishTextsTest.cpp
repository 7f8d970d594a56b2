#include "RVGit/command/RVGitEnglishTexts.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "RVGit/base/RVErrorManager.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitErrorCodes.h"

namespace {

bool isRawKey(const std::string& text) {
    return !text.empty() && std::ranges::all_of(text, [](char character) {
        return character == '_' || (character >= 'A' && character <= 'Z');
    });
}

// The texts are those of the process, which the other tests expect untranslated.
TEST(RVGitEnglishTextsTest, NoErrorShowsAKeyOnceTheyAreInstalled) {
    const auto codesThatShowKeys = [] {
        std::vector<std::int64_t> codes;
        for (std::int64_t code = 0; code < 4000; ++code) {
            const RVError error = gitErrorWithCode(code);
            if (isRawKey(error.localizedDescription().value_or("")) ||
                isRawKey(error.localizedFailureReason().value_or("")))
                codes.push_back(code);
        }
        return codes;
    };
    EXPECT_EQ(codesThatShowKeys().size(), 10U);
    EXPECT_EXIT(
        {
            installEnglishTexts();
            const auto left = codesThatShowKeys();
            for (const std::int64_t code : left)
                std::fprintf(stderr, "%lld shows a key\n", static_cast<long long>(code));
            std::_Exit(left.empty() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(RVGitEnglishTextsTest, ATranslationOfTheClientsOwnBeatsThem) {
    EXPECT_EXIT(
        {
            installEnglishTexts();
            setLocalizedString("NO_REFS_ERROR_DESCRIPTION", "Keine Referenzen");
            const bool isTranslated =
                gitErrorWithCode(RVGitNoRefsError).localizedDescription() == "Keine Referenzen";
            std::_Exit(isTranslated ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
