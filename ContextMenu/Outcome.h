// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QStringList>

/// What became of several steps, of which each is taken whatever became of the others.
class Outcome
{
public:
    /// Notes why \a step failed, if it did.
    void add(const Result<> &step)
    {
        if (!step)
            reasons_.append(step.error);
    }

    /// Notes the remarks of \a steps, or why one of them failed.
    void add(const Result<QStringList> &steps)
    {
        if (steps)
            remarks_ += *steps;
        else
            reasons_.append(steps.error);
    }

    /// Notes what its user has to know although no step failed.
    void remark(const QString &sentence) { remarks_.append(sentence); }

    /// The remarks; or, if a step failed, every reason in one line, and the remarks after them.
    Result<QStringList> result() const
    {
        if (reasons_.isEmpty())
            return remarks_;
        return Result<QStringList>::failure((reasons_ + remarks_).join(QStringLiteral("; ")));
    }

private:
    QStringList reasons_;
    QStringList remarks_;
};
