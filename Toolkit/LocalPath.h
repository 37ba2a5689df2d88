// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

class QUrl;

/// The absolute path of the file that \a url stands for, if that is a file of this machine, under whatever
/// name of it; else empty.
QString localPathOfUrl(const QUrl &url);
