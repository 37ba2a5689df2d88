// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Fuzz/PresetChecks.h"
#include "Fuzz/PropertyListChecks.h"
#include "Source/Editing/QNBAttributeCommands.h"
#include "Source/Editing/QNBStructureCommands.h"
#include "Source/Model/QNBPresetFile.h"

#include <QUndoStack>
#include <random>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr int edits = 40;
constexpr std::size_t mostItemsKnown = 200;

/// Edits are made for nobody to see.
class NoObserver final : public QNBEditObserver
{
public:
    void presetWillBeEditedAgain(const QNBPresetRecordPtr &) override {}
    void changesWillBegin() override {}
    void changesDidEnd() override {}
    void childWasInserted(const QNBHierarchyItemPtr &, std::size_t) override {}
    void childWasRemoved(const QNBHierarchyItemPtr &, std::size_t) override {}
    void itemsDidChange(const QNBHierarchyItem::Children &) override {}
    Expansion expansionOf(const QNBHierarchyItemPtr &) const override { return {}; }
    void setExpansionOf(const QNBHierarchyItemPtr &, const Expansion &) override {}
    void itemWasEditedAgain(const QNBHierarchyItemPtr &) override {}
};

/// A file that is in no folder.
class MemoryFile
{
public:
    explicit MemoryFile(const QByteArray &bytes)
        : descriptor_(::memfd_create("preset", MFD_CLOEXEC))
    {
        PresetChecks::require(::write(descriptor_, bytes.constData(), std::size_t(bytes.size())) ==
                                  bytes.size(),
                              "there is no memory for the file");
    }
    ~MemoryFile() { ::close(descriptor_); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(descriptor_); }

private:
    const int descriptor_;
};

/// The first items of the tree, from the root on.
std::vector<QNBHierarchyItemPtr> someItems(const QNBHierarchyItemPtr &root)
{
    std::vector<QNBHierarchyItemPtr> items{root};
    for (std::size_t at = 0; at < items.size() && items.size() < mostItemsKnown; ++at) {
        const QNBHierarchyItem::Children &children = items[at]->children();
        items.insert(items.end(), children.begin(),
                     children.begin() + std::ptrdiff_t(std::min(children.size(), mostItemsKnown)));
    }
    return items;
}

void edit(QUndoStack &history, QNBEditObserver &observer, const QNBPresetRecordPtr &preset,
          std::mt19937 &random)
{
    const auto pick = [&random](std::size_t count) { return std::size_t(random()) % count; };
    const std::vector<QNBHierarchyItemPtr> items = someItems(preset->fileHierarchy());
    const QNBHierarchyItemPtr item = items[pick(items.size())];
    switch (pick(6)) {
    case 0:
        history.push(new QNBInsertItemCommand(observer, preset, QNBHierarchyItem::init(), item,
                                              item->childAtIndex(std::int32_t(pick(3))), QString()));
        break;
    case 1:
        if (item->parent() && item != items.front())
            history.push(new QNBRemoveItemCommand(observer, preset, item, item->parent(), QString()));
        break;
    case 2:
        history.push(new QNBSetItemTextCommand(observer, preset, item, QNBSetItemTextCommand::filename,
                                               QString::number(random()), QString()));
        break;
    case 3:
        history.push(new QNBSetItemTextCommand(observer, preset, item, QNBSetItemTextCommand::colorName,
                                               QStringLiteral("red"), QString()));
        break;
    case 4:
        history.undo();
        break;
    default:
        history.redo();
    }
}

} // namespace

/// A preset file's bytes, as a tree, after a row of edits, some of them taken back, and archived, are read
/// again to the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const Result<QNBPresetRecordPtr> imported = QNBPresetFile::read(MemoryFile(bytes).path());
    if (!imported)
        return 0;
    const QNBPresetRecordPtr preset = *imported;
    QString reason;
    NoObserver observer;
    std::mt19937 random(static_cast<unsigned>(qHash(bytes, 0)));
    {
        BinaryPropertyListWriter writer;
        const PropertyList::WriteResult before = writer.finish(preset->encode(writer));
        QUndoStack history;
        for (int i = 0; i < edits; ++i)
            edit(history, observer, preset, random);
        const int index = history.index();
        while (history.canUndo())
            history.undo();
        BinaryPropertyListWriter again;
        PresetChecks::require(again.finish(preset->encode(again)).bytes == before.bytes,
                              "what was taken back is not as it was");
        history.setIndex(index);
    }
    KeyedArchiver archiver;
    const PropertyList::WriteResult archive = archiver.finish(preset->encode(archiver));
    if (!archive) {
        PresetChecks::require(PropertyListChecks::mayBeRefusedInArchive(archive.error),
                              qPrintable(archive.error));
        return 0;
    }
    const PropertyListDocument::Ptr read = KeyedUnarchiver::unarchivedDocument(*archive.bytes, &reason);
    PresetChecks::require(read != nullptr, "what was archived is refused");
    PresetChecks::require(PresetChecks::sameStored(*preset, *QNBPresetRecord::fromStored(read->root())),
                          "what was archived reads back otherwise");
    return 0;
}
