#include <optional>

#include "RVGit/objects/RVGitTag.h"
#include "tests/support/RVCancelledCall.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

class RVGitTagThreadsTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitTagThreadsTest, AnOlderTagIsNotTakenForOneWhoseMakingIsCancelled) {
    const std::string hash = makeCommit();
    gitInRepository({"tag", "v1"});
    makeCommit();
    std::optional<RVError> error = RVError("before", 1);
    {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' tag '*"});
        EXPECT_EQ(RVGitTag::createTagWithRefName("v1", std::nullopt, repository(), &error),
                  nullptr);
    }
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(gitInRepository({"rev-parse", "v1"}), hash);
}

}  // namespace
