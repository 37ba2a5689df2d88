// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/EndToEnd/EditorFixture.h"

/// The pane starts and ends helpers, which are found by their name. So there may be none before, and what is
/// left of them afterwards is ended.
class HelperFixture : public EditorFixture
{
protected:
    ~HelperFixture() override;
    void SetUp() override;

private:
    bool hasBegun_ = false;
};
