// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <optional>
#include <utility>

/// What became of an action that can fail: its value, or the reason in words why there is none. The one way
/// to fail between functions of ours; a caller that ignores it is warned by the compiler.
template <typename T = void>
struct [[nodiscard]] Result
{
    std::optional<T> value;
    /// Empty on success.
    QString error;

    Result(T result)
        : value(std::move(result))
    {
    }
    static Result failure(const QString &reason) { return Result(std::nullopt, reason); }

    explicit operator bool() const { return value.has_value(); }
    /// These require success.
    T &operator*() & { return *value; }
    const T &operator*() const & { return *value; }
    T &&operator*() && { return std::move(*value); }
    T *operator->() { return &*value; }
    const T *operator->() const { return &*value; }

private:
    Result(std::nullopt_t, const QString &reason)
        : error(reason)
    {
    }
};

/// The same of an action that has no value to give.
template <>
struct [[nodiscard]] Result<void>
{
    bool ok = true;
    /// Empty on success.
    QString error;

    static Result failure(const QString &reason) { return {false, reason}; }

    explicit operator bool() const { return ok; }
};
