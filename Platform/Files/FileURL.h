// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QUrl>
#include <optional>

/// File URLs and the paths that they stand for, byte for byte: a name on disk is any bytes, UTF-8 or not, and
/// a URL can spell them all.

/// The absolute path of \a url. None if it is no URL of a file of this machine, or names what no path can (a
/// null character, a relative path).
std::optional<QByteArray> pathOfFileURL(const QUrl &url);

/// The URL of the absolute \a path; for a path that is text the one that QUrl::fromLocalFile makes.
QUrl fileURLOfPath(const QByteArray &path);
