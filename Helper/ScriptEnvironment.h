// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArrayList>

namespace ScriptEnvironment {

/// ChildEnvironment, as assignments, for a program that starts in a folder that strangers may have filled:
/// programs, libraries, and modules of Perl, Python, Ruby and Node are not looked for there. Of
/// the lists of folders in which they are, only absolute paths are left; an empty entry stands for the
/// working folder, too.
QByteArrayList assignments();

} // namespace ScriptEnvironment
