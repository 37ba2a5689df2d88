// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/PathExtension.h"

#include <gtest/gtest.h>

namespace {

struct Split
{
    const char *path;
    const char *base;
    const char *extension;
};

class PathExtensionTest : public ::testing::TestWithParam<Split>
{
};

TEST_P(PathExtensionTest, SplitsAtTheLastFullStopOfTheLastComponent)
{
    const QString path = QString::fromUtf8(GetParam().path);
    EXPECT_EQ(stringByDeletingPathExtension(path), QString::fromUtf8(GetParam().base));
    EXPECT_EQ(pathExtension(path), QString::fromUtf8(GetParam().extension));
}

INSTANTIATE_TEST_SUITE_P(
    Paths, PathExtensionTest,
    ::testing::Values(Split{"", "", ""}, Split{"notes", "notes", ""}, Split{"notes.txt", "notes", "txt"},
                      Split{"archive.tar.gz", "archive.tar", "gz"}, Split{".profile", ".profile", ""},
                      Split{".profile.bak", ".profile", "bak"}, Split{".", ".", ""}, Split{"..", "..", ""},
                      Split{"a.", "a.", ""}, Split{"a..", "a..", ""}, Split{"a..txt", "a.", "txt"},
                      Split{"Dr. No", "Dr", " No"}, Split{"été.TÊT", "été", "TÊT"},
                      Split{"v1.5/read me", "v1.5/read me", ""}, Split{"v1.5/a.txt", "v1.5/a", "txt"},
                      Split{"v1/.profile", "v1/.profile", ""}, Split{"v1.5/", "v1.5/", ""}));

} // namespace
