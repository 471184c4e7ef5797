// Office Open XML workbooks (.xlsx): the zip is opened with libgsf, its XML
// parts read with QXmlStreamReader. The first worksheet is found the way
// Excel finds it: through the package's and the workbook's relationships.
// A zip that cannot be opened or a part that ends early makes the file damaged;
// a part this reader does not understand is named in the refusal.
#include "importer/WorkbookFormats.h"

#include <QHash>
#include <QStringDecoder>
#include <QXmlStreamReader>
#include <gsf/gsf-infile-zip.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-utils.h>
#include <mutex>
#include <optional>

namespace ht
{

namespace
{

constexpr gsf_off_t kMaxPartBytes = 256 * 1024 * 1024; // unpacked: a zip bomb is refused, not unpacked
// Entity references resolved in one part, counting those inside entities: a
// workbook needs none, and a million take Qt's parser about a second.
constexpr qint64 kMaxEntityExpansions = 100000;

// A part ends early: the file is damaged.
struct Damaged {
    QString why;
};
// A part that is not as this reader expects.
struct Unexpected {
    QString part, why;
};

void checkEntityExpansions(const QByteArray &data, const QString &path);

struct GObjectRef {
    gpointer object = nullptr;
    ~GObjectRef()
    {
        if (object)
            g_object_unref(object);
    }
};

class Package
{
  public:
    explicit Package(GsfInfile *zip) : m_zip(zip) {}

    // A part by its path inside the package ("xl/workbook.xml"); nothing when it is not there.
    std::optional<QByteArray> part(const QString &path) const
    {
        const QList<QByteArray> names = path.toUtf8().split('/');
        std::vector<const char *> chain;
        for (const QByteArray &n : names)
            if (!n.isEmpty())
                chain.push_back(n.constData());
        chain.push_back(nullptr);
        GObjectRef child{gsf_infile_child_by_aname(m_zip, chain.data())};
        if (!child.object)
            return std::nullopt;
        GsfInput *in = GSF_INPUT(child.object);
        const gsf_off_t size = gsf_input_size(in);
        if (size < 0 || size > kMaxPartBytes)
            throw Unexpected{path, QStringLiteral("it unpacks to more than 256 MB")};
        QByteArray data(qsizetype(size), Qt::Uninitialized);
        if (size > 0 && !gsf_input_read(in, size, reinterpret_cast<guint8 *>(data.data())))
            throw Unexpected{path, QStringLiteral("it cannot be unpacked")}; // damaged, or packed in a way libgsf lacks
        checkEntityExpansions(data, path);
        return data;
    }

  private:
    GsfInfile *m_zip;
};

// A relationship's target as a path in the package, from the folder of the part that names it.
QString resolve(const QString &folder, const QString &target)
{
    if (target.startsWith(u'/'))
        return target.mid(1);
    QStringList parts = folder.split(u'/', Qt::SkipEmptyParts);
    for (const QString &p : target.split(u'/', Qt::SkipEmptyParts)) {
        if (p == QLatin1String(".."))
            parts.isEmpty() ? void() : parts.removeLast();
        else if (p != QLatin1String("."))
            parts << p;
    }
    return parts.join(u'/');
}

void failOnError(const QXmlStreamReader &xml, const QString &part)
{
    if (xml.error() == QXmlStreamReader::PrematureEndOfDocumentError)
        throw Damaged{part + QStringLiteral(" ends early")};
    if (xml.hasError())
        throw Unexpected{part, QStringLiteral("it is not well-formed XML (line %1, column %2: %3)")
                                   .arg(xml.lineNumber())
                                   .arg(xml.columnNumber())
                                   .arg(xml.errorString())};
}

// The entity references in `text` ("&name;"), each with the number of times it occurs.
QHash<QString, qint64> entityReferences(QStringView text)
{
    QHash<QString, qint64> references;
    for (qsizetype at = text.indexOf(u'&'); at >= 0; at = text.indexOf(u'&', at + 1)) {
        const qsizetype end = text.indexOf(u';', at + 1);
        if (end < 0)
            break;
        const QStringView name = text.sliced(at + 1, end - at - 1);
        if (!name.isEmpty() && name[0] != u'#' && !name.contains(u'&') && !name.contains(u'<'))
            ++references[name.toString()];
    }
    return references;
}

// Refuses a part whose declared entities would cost more than kMaxEntityExpansions
// to expand, however little text they make: "<!ENTITY a ''>" nested ten deep, each
// used ten times, costs ten billion expansions and makes nothing.
void checkEntityExpansions(const QByteArray &data, const QString &path)
{
    QXmlStreamReader prolog(data); // reads no further than the first element
    prolog.setNamespaceProcessing(false);
    while (!prolog.atEnd() && !prolog.isDTD() && !prolog.isStartElement())
        prolog.readNext();
    const QXmlStreamEntityDeclarations declared = prolog.entityDeclarations();
    if (declared.isEmpty())
        return;
    QHash<QString, QStringView> values;
    for (const QXmlStreamEntityDeclaration &d : declared)
        values.insert(d.name().toString(), d.value());
    // The expansions one reference to an entity costs, itself included; memoised.
    QHash<QString, qint64> cost;
    const auto costOf = [&](const auto &self, const QString &name, int depth) -> qint64 {
        if (const auto known = cost.constFind(name); known != cost.cend())
            return *known;
        if (!values.contains(name))
            return 1; // a predefined entity (&amp;) or one the parser leaves unresolved
        if (depth > 64)
            return kMaxEntityExpansions + 1;
        cost.insert(name, kMaxEntityExpansions + 1); // a reference to itself is refused, not followed
        qint64 total = 1;
        const auto references = entityReferences(values.value(name));
        for (auto r = references.cbegin(); r != references.cend() && total <= kMaxEntityExpansions; ++r)
            total += std::min(kMaxEntityExpansions + 1, r.value() * self(self, r.key(), depth + 1));
        cost.insert(name, std::min(total, kMaxEntityExpansions + 1));
        return cost.value(name);
    };
    qint64 total = 0;
    const QString text = QStringDecoder(QStringConverter::encodingForData(data).value_or(QStringConverter::Utf8))(data);
    const auto references = entityReferences(text);
    for (auto r = references.cbegin(); r != references.cend() && total <= kMaxEntityExpansions; ++r)
        if (values.contains(r.key()))
            total += std::min(kMaxEntityExpansions + 1, r.value() * costOf(costOf, r.key(), 0));
    if (total > kMaxEntityExpansions)
        throw Unexpected{path, QStringLiteral("the XML entities it declares would take too long to expand")};
}

// The target of the first relationship whose type ends with `typeEnd`, or with the id `id`.
QString relationshipTarget(const QByteArray &rels, const QString &part, const QString &typeEnd, const QString &id)
{
    QXmlStreamReader xml(rels);
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement() || xml.name() != QLatin1String("Relationship"))
            continue;
        const auto a = xml.attributes();
        if ((!id.isEmpty() && a.value(QLatin1String("Id")) == id) ||
            (!typeEnd.isEmpty() && a.value(QLatin1String("Type")).endsWith(typeEnd)))
            return a.value(QLatin1String("Target")).toString();
    }
    failOnError(xml, part);
    return {};
}

QString relsOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    return path.left(slash + 1) + QStringLiteral("_rels/") + path.mid(slash + 1) + QStringLiteral(".rels");
}

QString folderOf(const QString &path)
{
    return path.left(std::max<qsizetype>(0, path.lastIndexOf(u'/')));
}

// The relationship id of the workbook's first sheet.
QString firstSheetId(const QByteArray &workbook, const QString &part)
{
    QXmlStreamReader xml(workbook);
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == QLatin1String("sheet")) {
            for (const QXmlStreamAttribute &a : xml.attributes())
                if (a.name() == QLatin1String("id") && !a.namespaceUri().isEmpty())
                    return a.value().toString();
        }
    }
    failOnError(xml, part);
    return {};
}

// Characters XML cannot carry, written as "_x000D_"; "_x005F_" is the underscore itself.
QString unescaped(const QString &text)
{
    if (!text.contains(QLatin1String("_x")))
        return text;
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'_' && i + 6 < text.size() && text[i + 1] == u'x' && text[i + 6] == u'_') {
            bool ok = false;
            const ushort code = text.mid(i + 2, 4).toUShort(&ok, 16);
            if (ok) {
                out += QChar(code);
                i += 6;
                continue;
            }
        }
        out += text[i];
    }
    return out;
}

// The text of the <si> or <is> the reader stands on: its <t>s, those of
// phonetic runs left out. Leaves the reader on the element's end.
QString stringItem(QXmlStreamReader &xml)
{
    QString text;
    int depth = 0, phonetic = 0;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            if (xml.name() == QLatin1String("t") && phonetic == 0) {
                text += xml.readElementText(); // ends on </t>
                continue;
            }
            ++depth;
            if (xml.name() == QLatin1String("rPh"))
                ++phonetic;
        } else if (xml.isEndElement()) {
            if (depth == 0)
                break;
            --depth;
            if (xml.name() == QLatin1String("rPh"))
                --phonetic;
        }
    }
    return unescaped(text);
}

std::vector<QString> sharedStrings(const QByteArray &part, const QString &name)
{
    std::vector<QString> strings;
    QXmlStreamReader xml(part);
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == QLatin1String("si"))
            strings.push_back(stringItem(xml));
    }
    failOnError(xml, name);
    return strings;
}

// "B3" -> row 2, column 1.
bool cellReference(QStringView ref, quint32 &row, quint32 &column)
{
    quint64 c = 0, r = 0;
    qsizetype i = 0;
    for (; i < ref.size() && ref[i].isLetter(); ++i) {
        c = c * 26 + (ref[i].toUpper().unicode() - 'A' + 1);
        if (c > 0xFFFFFFFFu)
            return false;
    }
    for (qsizetype d = i; d < ref.size(); ++d) {
        if (!ref[d].isDigit())
            return false;
        r = r * 10 + (ref[d].unicode() - '0');
        if (r > 0xFFFFFFFFu)
            return false;
    }
    if (c == 0 || r == 0 || i == ref.size())
        return false;
    row = quint32(r - 1);
    column = quint32(c - 1);
    return true;
}

// "B3" for row 2, column 1.
QString cellName(quint32 row, quint32 column)
{
    QString letters;
    for (quint64 c = quint64(column) + 1; c > 0; c = (c - 1) / 26)
        letters.prepend(QChar(char16_t(u'A' + (c - 1) % 26)));
    return letters + QString::number(quint64(row) + 1);
}

QString valueText(const QString &type, const QString &value)
{
    if (type == QLatin1String("b"))
        return value.trimmed() == QLatin1String("1") ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
    if (type.isEmpty() || type == QLatin1String("n")) {
        bool ok = false;
        const double number = value.toDouble(&ok);
        return ok ? numberText(number) : value;
    }
    return type == QLatin1String("str") ? unescaped(value) : value; // a formula's text; e (an error), d (a date)
}

void readSheet(const QByteArray &part, const QString &name, const std::vector<QString> &strings, Sheet &sheet)
{
    QXmlStreamReader xml(part);
    qint64 row = -1, column = -1;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("row")) {
            bool ok = false;
            const qint64 r = xml.attributes().value(QLatin1String("r")).toLongLong(&ok);
            row = ok && r > 0 ? r - 1 : row + 1;
            column = -1;
        } else if (xml.name() == QLatin1String("c")) {
            const auto attributes = xml.attributes();
            const QString type = attributes.value(QLatin1String("t")).toString();
            quint32 r = 0, c = 0;
            if (cellReference(attributes.value(QLatin1String("r")), r, c)) {
                row = r;
                column = c;
            } else {
                ++column;
                row = std::max<qint64>(row, 0);
            }
            if (row > 0xFFFFFFFFLL || column > 0xFFFFFFFFLL)
                throw Damaged{QStringLiteral("a cell lies beyond any sheet")};
            QString value;
            bool inlineText = false;
            int depth = 1;
            while (depth > 0 && !xml.atEnd()) {
                xml.readNext();
                if (xml.isStartElement()) {
                    if (xml.name() == QLatin1String("v")) {
                        value = xml.readElementText();
                    } else if (xml.name() == QLatin1String("is")) {
                        value = stringItem(xml);
                        inlineText = true;
                    } else {
                        ++depth;
                    }
                } else if (xml.isEndElement()) {
                    --depth;
                }
            }
            if (inlineText || value.isEmpty()) { // <v/>: an empty cell, whatever its type
                sheet.set(quint32(row), quint32(column), value);
            } else if (type == QLatin1String("s")) {
                bool ok = false;
                const qulonglong index = value.toULongLong(&ok);
                if (!ok || index >= strings.size())
                    throw Unexpected{name, QStringLiteral("cell %1 refers to shared text %2, which does not exist")
                                               .arg(cellName(quint32(row), quint32(column)), value)};
                sheet.set(quint32(row), quint32(column), strings[index]);
            } else {
                sheet.set(quint32(row), quint32(column), valueText(type, value));
            }
        }
    }
    failOnError(xml, name);
}

} // namespace

void readXlsxWorkbook(const QByteArray &bytes, const QString &name, Workbook &book)
{
    initContainerLibrary();

    GObjectRef input{gsf_input_memory_new(reinterpret_cast<const guint8 *>(bytes.constData()), bytes.size(), FALSE)};
    GError *error = nullptr;
    GObjectRef zip{gsf_infile_zip_new(GSF_INPUT(input.object), &error)};
    if (error)
        g_error_free(error);
    if (!zip.object)
        refuseWorkbook(name, QStringLiteral("is damaged: it is not a readable zip archive"));
    try {
        const Package package(GSF_INFILE(zip.object));
        QString main = QStringLiteral("xl/workbook.xml");
        if (const auto rels = package.part(QStringLiteral("_rels/.rels"))) {
            const QString target =
                relationshipTarget(*rels, QStringLiteral("_rels/.rels"), QStringLiteral("/officeDocument"), {});
            if (!target.isEmpty())
                main = resolve(QString(), target);
        }
        const auto workbook = package.part(main);
        if (!workbook)
            refuseWorkbook(name, QStringLiteral("is not an Excel workbook: it holds no workbook part"));
        const QString id = firstSheetId(*workbook, main);
        const auto rels = package.part(relsOf(main));
        if (id.isEmpty() || !rels)
            refuseWorkbook(name, QStringLiteral("holds no worksheet"));
        const QString sheetPath = resolve(folderOf(main), relationshipTarget(*rels, relsOf(main), {}, id));
        std::vector<QString> strings;
        const QString stringsTarget = relationshipTarget(*rels, relsOf(main), QStringLiteral("/sharedStrings"), {});
        if (!stringsTarget.isEmpty()) {
            const QString stringsPath = resolve(folderOf(main), stringsTarget);
            if (const auto part = package.part(stringsPath))
                strings = sharedStrings(*part, stringsPath);
        }
        const auto sheet = package.part(sheetPath);
        if (!sheet)
            refuseWorkbook(name, QStringLiteral("is damaged: its first worksheet ") + sheetPath +
                                     QStringLiteral(" is missing"));
        book.m_sheets.emplace_back();
        readSheet(*sheet, sheetPath, strings, book.m_sheets.back());
    } catch (const Damaged &d) {
        refuseWorkbook(name, QStringLiteral("is damaged and cannot be read (") + d.why + QLatin1Char(')'));
    } catch (const Unexpected &u) {
        refuseWorkbook(name, QStringLiteral("cannot be read: reading stopped at its part ") + u.part +
                                 QStringLiteral(": ") + u.why);
    }
}

} // namespace ht
