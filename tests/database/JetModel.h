#pragma once
// Jet test files read two ways: by our own reader, with where each row lies,
// and through libmdb; a copy edited round by round and checked after each.

#include "database/HelpTextFixture.h"
#include "database/jet/JetEditor.h"

#include <QTemporaryDir>
#include <functional>
#include <map>
#include <string>

namespace ht::test
{

extern const char *const kAccessFiles[7];

jet::Image loadImage(const QString &path);
QString canonical(const QVariant &v);
// Every user table as libmdb reads it: sorted rows of "column=value" fields, by table name.
std::map<QString, QStringList> readThroughLibmdb(const QString &path);

// Every row as our own reader reads it, with where it lies.
struct Model {
    std::map<QString, std::map<quint32, QVariantList>> rows; // table -> packed slot -> values by column number
    std::map<QString, QStringList> asLibmdbReadsIt(jet::Editor &editor) const;
};
Model readModel(jet::Editor &editor);

// A file copied into a temporary folder, its model kept in step with the edits.
struct EditedCopy {
    QTemporaryDir dir;
    QString path;
    Model model;
    explicit EditedCopy(const QString &source);
    void edit(const std::function<void(jet::Editor &, Model &)> &change);
    // Sound, and both readers read what the model says.
    void verify(const std::string &where);
};

void setValue(jet::Editor &editor, Model &model, const QString &table, quint32 slot, const QString &column,
              const QVariant &value);
// Text of the scripts help texts are written in, cut to `length`.
constexpr int kScriptCount = 7;
QString textOfLength(int length, int script);
// The message of the DbError `f` throws; empty when it throws none.
QString dbErrorOf(const std::function<void()> &f);

} // namespace ht::test
