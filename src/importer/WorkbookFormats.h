#pragma once
// The readers of the workbook formats, each filling a Workbook's sheets.

#include "importer/Workbook.h"

#include <QByteArray>

namespace ht
{

// An OLE2 compound file holding a "Workbook" (BIFF8) or "Book" (BIFF5) stream.
void readBiffWorkbook(const QByteArray &bytes, const QString &name, Workbook &book);
// A zip of XML parts (.xlsx); only the first worksheet is read.
void readXlsxWorkbook(const QByteArray &bytes, const QString &name, Workbook &book);

// libgsf, set up once; its and GLib's warnings about a bad file are kept off the terminal.
void initContainerLibrary();

// "The workbook <name> <why>."
[[noreturn]] void refuseWorkbook(const QString &name, const QString &why);

} // namespace ht
