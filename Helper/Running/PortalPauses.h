// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

/// How long a portal that has gone is left alone before it is asked again: each time twice as long as the
/// time before, up to the longest.
class PortalPauses
{
public:
    static constexpr std::chrono::milliseconds first{500};

    /// \a longest is not shorter than the first.
    explicit PortalPauses(std::chrono::milliseconds longest = std::chrono::seconds(30))
        : longest_(longest)
    {
    }

    /// The next one, when the portal has heard the hot key for the time \a heard; the first if that was more
    /// than the longest. None once the longest has been used.
    std::optional<std::chrono::milliseconds> next(std::chrono::milliseconds heard = {})
    {
        if (heard > longest_)
            reset();
        if (last_ == longest_)
            return {};
        last_ = std::clamp(2 * last_, first, longest_);
        return last_;
    }
    /// The next one is the first.
    void reset() { last_ = {}; }

private:
    std::chrono::milliseconds longest_;
    std::chrono::milliseconds last_{};
};
