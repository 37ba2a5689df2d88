// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Launcher/Launcher.h"
#include "Helper/Presets.h"

#include <QByteArray>
#include <QStringList>

#include <functional>

class Creations;

/// The launcher of the presets that a process knows: what the user chooses in it is created, or undone.
class PresetLauncher
{
public:
    /// \a opened is called after each opening, as a request to read the presets again: nobody need have told
    /// of the last changes. \a closed is called after the window has been closed, by whatever.
    PresetLauncher(
        Creations &creations, std::function<void()> opened, std::function<void()> closed = [] {});

    /// What was read of the settings. Where that failed, the presets stay those that were known before.
    void setSettings(const Result<QNBSettings> &settings);
    /// Of the presets that are known, in their order.
    const QStringList &labels() const { return labels_; }

    /// Opens the window for the folders \a named, if there are any, with the presets that are known. \a
    /// activationToken may be empty, see ActivationToken.
    void open(const QStringList &named, const QByteArray &activationToken = {});
    /// The same with what another program has asked for.
    void open(Launcher::Content content, const QByteArray &activationToken);
    void close() { launcher_.close(); }

private:
    Creations &creations_;
    const std::function<void()> opened_;
    QStringList labels_;
    QString problem_;
    Launcher launcher_;
};
