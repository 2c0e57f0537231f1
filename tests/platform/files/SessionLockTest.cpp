#include "platform/files/SessionLock.h"

#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

using platform::SessionLock;

TEST(SessionLock, IsHeldByOneAtATimeUntilItIsDestroyed) {
    const support::PrivateFolder folder;
    const support::ScopedVariable runtime("XDG_RUNTIME_DIR", folder.path().string());
    std::optional<SessionLock> first(std::in_place, "com.example.One");
    SessionLock second("com.example.One");
    SessionLock other("com.example.Other");
    EXPECT_TRUE(first->take());
    EXPECT_TRUE(first->take()) << "it is ours already";
    EXPECT_FALSE(second.take());
    EXPECT_TRUE(other.take());
    first.reset();
    EXPECT_TRUE(second.take());
    EXPECT_FALSE(SessionLock("com.example.One").take());
}

TEST(SessionLock, SucceedsWhereNoFileCanBeCreated) {
    const support::PrivateFolder folder;
    std::filesystem::create_symlink("elsewhere", folder.path() / "com.example.One.lock");
    using Value = std::optional<std::string>;
    for (const Value& runtime :
         {Value(), Value(folder.path() / "absent"), Value(folder.path().string())}) {
        const support::ScopedVariable variable("XDG_RUNTIME_DIR", runtime);
        SessionLock first("com.example.One");
        SessionLock second("com.example.One");
        EXPECT_TRUE(first.take() && second.take()) << runtime.value_or("unset");
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "elsewhere"));
}
