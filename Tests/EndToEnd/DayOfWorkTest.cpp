// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/EditorFixture.h"

namespace {

class DayOfWorkTest : public EditorFixture
{
protected:
    void addPreset(const QString &label)
    {
        const qsizetype count = pane_.presets().size();
        // The button shows that it is pressed before it does its work.
        user_.presses(QStringLiteral("alt+n"));
        ASSERT_TRUE(waitUntil([&] { return pane_.presets().size() == count + 1; }));
        user_.types(label);
        user_.presses(QStringLiteral("Return"));
        ASSERT_TRUE(waitUntil([&] { return pane_.presets().constLast() == label; }));
    }
};

} // namespace

TEST_F(DayOfWorkTest, IsKept)
{
    ASSERT_NO_FATAL_FAILURE(start());
    step("a preset is added", 1, [&] { addPreset(QStringLiteral("Wedding")); });
    step("it is described", 1, [&] {
        user_.presses(QStringLiteral("alt+d"));
        user_.types(QStringLiteral("From planning to photos."));
        user_.presses(QStringLiteral("alt+f"));
    });
    undoAllAndRedoAll();
}
