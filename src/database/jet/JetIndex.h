#pragma once
// The index pages of Jet 4 files: their entries read, and an index of a table
// rebuilt from the table's rows. A rebuild writes the leaves in key order and
// the node levels above them, each level linked to its neighbours, a node's
// last child as its tail; then the root and key count in the table's
// definition, and the index's own page map. Its old pages are used again
// first; those left over are freed.

#include "database/jet/JetTable.h"

#include <functional>
#include <vector>

namespace ht::jet
{

constexpr quint8 kIndexNodePage = 3, kIndexLeafPage = 4;

// The entries of an index page, whole (the shared prefix put back): the key,
// the row's pointer (its page in 3 bytes big-endian, then its row) and, on a
// node page, the child page (4 bytes big-endian).
std::vector<QByteArray> indexPageEntries(const char *page);
// The row a leaf entry points at.
RowPointer entryRow(const QByteArray &entry);

// The index's leaves in their order with their entries: down the first
// children to the leftmost leaf, then along the leaves' next links. Throws
// DbError, through the image, when the pages are no index pages.
void forEachLeaf(const Image &image, quint32 root,
                 const std::function<void(quint32 leaf, const std::vector<QByteArray> &entries)> &visit);

// Compares each key the index holds with the one computed from its row: the
// first that differs or cannot be computed, described; "" when every one is as computed.
QString storedKeysDiffer(const Image &image, const TableDef &table, int index);

// Throws DbError, with pages half written, when a key cannot be computed or a
// unique index would hold one key twice: the caller drops the image then.
void rebuildIndex(Image &image, const TableDef &table, int index);

} // namespace ht::jet
