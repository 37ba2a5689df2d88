// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/ChildProcess.h"

#include <future>

/// The result of what runs on another thread; events are processed meanwhile.
template <class Value>
Value resultOf(std::future<Value> &future)
{
    waitUntil([&] { return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
    return future.get();
}
