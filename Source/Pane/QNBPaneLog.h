// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcPane)
