// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QTemporaryDir>

/// A socket that takes connections and what is sent on them, and never says anything.
class SilentSocket
{
public:
    SilentSocket();
    ~SilentSocket();
    SilentSocket(const SilentSocket &) = delete;
    SilentSocket &operator=(const SilentSocket &) = delete;

    /// As the address of a bus.
    QString busAddress() const;
    /// Listens; still this object's.
    int descriptor() const { return descriptor_; }

private:
    QTemporaryDir folder_;
    int descriptor_ = -1;
};
