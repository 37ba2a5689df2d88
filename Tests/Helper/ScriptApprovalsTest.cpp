// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptApprovals.h"

#include "Tests/Platform/Files/FileFixture.h"

#include <thread>
#include <vector>

namespace {

class ScriptApprovalsTest : public FileFixture
{
protected:
    QString stateFolder() const { return in(QStringLiteral("state/Quenby")); }
    ScriptApprovals approvals(const std::optional<Bundle> &pane = {}) const { return {stateFolder(), pane}; }
};

} // namespace

TEST_F(ScriptApprovalsTest, WhatIsAllowedStaysAllowed)
{
    EXPECT_FALSE(approvals().isAllowed("one"));
    ASSERT_TRUE(approvals().allow("one"));
    ASSERT_TRUE(approvals().allow("two"));
    ASSERT_TRUE(approvals().allow("two"));
    EXPECT_TRUE(approvals().isAllowed("one"));
    EXPECT_TRUE(approvals().isAllowed("two"));
    EXPECT_FALSE(approvals().isAllowed("one "));
    EXPECT_FALSE(approvals().isAllowed(""));
}

TEST_F(ScriptApprovalsTest, WhatThePaneCarriesIsAllowed)
{
    const QString contents = in(QStringLiteral("A.prefPane/Contents"));
    const QString scripts = contents + QStringLiteral("/Resources/QNB Default AppSupport/Scripts/Sub");
    QDir().mkpath(scripts);
    put(contents + QStringLiteral("/Info.plist"), "<plist version=\"1.0\"><dict/></plist>");
    put(scripts + QStringLiteral("/script"), "shipped");
    const auto pane = Bundle::bundleWithPath(in(QStringLiteral("A.prefPane")));
    ASSERT_TRUE(pane);
    EXPECT_TRUE(approvals(pane).isAllowed("shipped"));
    EXPECT_FALSE(approvals(pane).isAllowed("shippeD"));
    EXPECT_FALSE(approvals().isAllowed("shipped"));
}

TEST_F(ScriptApprovalsTest, ADamagedFileAllowsNothingUntilSomethingIsAllowedAgain)
{
    ASSERT_TRUE(approvals().allow("one"));
    for (const QByteArray &damaged : {QByteArray("bplist00 no more"), QByteArray(),
                                      QByteArray("<plist version=\"1.0\"><array/></plist>")}) {
        put(stateFolder() + QStringLiteral("/AllowedScripts.plist"), damaged);
        EXPECT_FALSE(approvals().isAllowed("one"));
        ASSERT_TRUE(approvals().allow("two"));
        EXPECT_TRUE(approvals().isAllowed("two"));
        EXPECT_FALSE(approvals().isAllowed("one"));
    }
}

TEST_F(ScriptApprovalsTest, TellsThatItCannotRemember)
{
    put(in(QStringLiteral("state")), "no folder");
    EXPECT_FALSE(approvals().allow("one"));
    EXPECT_FALSE(approvals().isAllowed("one"));
}

TEST_F(ScriptApprovalsTest, NoneIsLostWhenSeveralAreAllowedAtOnce)
{
    constexpr int count = 16;
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([this, i] { EXPECT_TRUE(approvals().allow(QByteArray::number(i))); });
    for (std::thread &thread : threads)
        thread.join();
    for (int i = 0; i < count; ++i)
        EXPECT_TRUE(approvals().isAllowed(QByteArray::number(i))) << i;
}
