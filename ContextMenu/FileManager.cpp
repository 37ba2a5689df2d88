// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/FileManager.h"

#include "ContextMenu/CajaMenu.h"
#include "ContextMenu/DolphinMenu.h"
#include "ContextMenu/NautilusMenu.h"
#include "ContextMenu/NemoMenu.h"
#include "ContextMenu/PCManFMQtMenu.h"
#include "ContextMenu/ThunarMenu.h"

#include <QFileInfo>
#include <QStandardPaths>

FileManager::~FileManager() = default;

std::vector<std::unique_ptr<FileManager>> FileManager::all()
{
    std::vector<std::unique_ptr<FileManager>> managers;
    managers.push_back(std::make_unique<DolphinMenu>());
    managers.push_back(std::make_unique<NautilusMenu>());
    managers.push_back(std::make_unique<NemoMenu>());
    managers.push_back(std::make_unique<ThunarMenu>());
    managers.push_back(std::make_unique<PCManFMQtMenu>());
    managers.push_back(std::make_unique<CajaMenu>());
    return managers;
}

bool FileManager::isPresent() const
{
    return QFileInfo(configurationFolder()).isDir() || !QStandardPaths::findExecutable(program()).isEmpty();
}
