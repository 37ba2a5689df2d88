// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QProcessEnvironment>

/// Whose the home folder is.
namespace HomeOwner {

/// Fails, with a sentence for the user, if the home folder of \a environment belongs to another user than the
/// one that this process runs as: root with the HOME of a user (`sudo -E`) would leave files there that their
/// owner can no longer replace. A program that writes there asks this before anything else. A home that is
/// missing belongs to nobody else.
Result<> check(const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

} // namespace HomeOwner
