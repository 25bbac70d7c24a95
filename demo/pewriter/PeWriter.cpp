#include "pewriter/PeWriter.h"

#include <QFile>
#include <QtEndian>

namespace PeWriter {
namespace {

constexpr quint32 SectionAlignment = 0x1000;
constexpr quint32 FileAlignment = 0x200;
constexpr int PeOffset = 0x80;

void put16(QByteArray &out, quint16 value)
{
    char bytes[2];
    qToLittleEndian(value, bytes);
    out.append(bytes, 2);
}

void put32(QByteArray &out, quint32 value)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    out.append(bytes, 4);
}

void put64(QByteArray &out, quint64 value)
{
    put32(out, quint32(value));
    put32(out, quint32(value >> 32));
}

void set16(QByteArray &out, int at, quint16 value)
{
    qToLittleEndian(value, out.data() + at);
}

void padTo(QByteArray &out, int alignment)
{
    while (out.size() % alignment)
        out.append('\0');
}

quint32 alignUp(quint32 value, quint32 alignment)
{
    return (value + alignment - 1) / alignment * alignment;
}

QByteArray utf16z(const QString &text)
{
    QByteArray out;
    for (QChar c : text)
        put16(out, c.unicode());
    put16(out, 0);
    return out;
}

// One node of the version tree: wLength, wValueLength, wType, key, value and
// children, each of the last three starting on a 32-bit boundary.
QByteArray versionNode(const QString &key, const QByteArray &value, quint16 valueLength, bool text,
                       const QList<QByteArray> &children = {})
{
    QByteArray node(6, '\0');
    node += utf16z(key);
    padTo(node, 4);
    node += value;
    for (const QByteArray &child : children) {
        padTo(node, 4);
        node += child;
    }
    set16(node, 0, quint16(node.size()));
    set16(node, 2, valueLength);
    set16(node, 4, text ? 1 : 0);
    return node;
}

QString versionText(const Version &v)
{
    return QStringLiteral("%1.%2.%3.%4").arg(v[0]).arg(v[1]).arg(v[2]).arg(v[3]);
}

QByteArray versionInfo(const Options &options)
{
    const Version &v = options.version;
    const quint32 ms = quint32(v[0]) << 16 | v[1];
    const quint32 ls = quint32(v[2]) << 16 | v[3];
    QByteArray fixed;
    // signature, struct version, file and product version, flags mask, flags,
    // OS (VOS_NT_WINDOWS32), type, subtype, date
    for (quint32 field :
         {0xFEEF04BDu, 0x00010000u, ms, ls, ms, ls, 0x3Fu, 0u, 0x40004u, options.fileType, 0u, 0u, 0u})
        put32(fixed, field);

    QList<QByteArray> children;
    if (options.stringFileInfo) {
        QList<QPair<QString, QString>> values{{QStringLiteral("FileVersion"), versionText(v)},
                                              {QStringLiteral("ProductVersion"), versionText(v)}};
        values += options.strings;
        QList<QByteArray> strings;
        for (const auto &[key, value] : values)
            strings << versionNode(key, utf16z(value), quint16(value.size() + 1), true);
        const QString table =
            QStringLiteral("%1").arg(options.language, 4, 16, QLatin1Char('0')) + QStringLiteral("04b0");
        children << versionNode(QStringLiteral("StringFileInfo"), {}, 0, true,
                                {versionNode(table, {}, 0, true, strings)});
        QByteArray translation;
        put16(translation, options.language);
        put16(translation, 1200); // UTF-16 code page
        children << versionNode(QStringLiteral("VarFileInfo"), {}, 0, true,
                                {versionNode(QStringLiteral("Translation"), translation, 4, false)});
    }
    return versionNode(QStringLiteral("VS_VERSION_INFO"), fixed, quint16(fixed.size()), false, children);
}

// Type 16 -> name 1 -> language -> data entry, then the version block.
QByteArray resourceSection(const Options &options, quint32 resourceRva, int *versionOffset)
{
    QByteArray out;
    const auto directory = [&out](quint32 id, quint32 target) {
        for (quint32 field : {0u, 0u, 0u})
            put32(out, field); // characteristics, time stamp, major/minor version
        put16(out, 0);         // named entries
        put16(out, 1);         // id entries
        put32(out, id);
        put32(out, target);
    };
    directory(16, 0x80000000u | 0x18);
    directory(1, 0x80000000u | 0x30);
    directory(options.language, 0x48);
    const QByteArray version = versionInfo(options);
    *versionOffset = 0x58;
    put32(out, resourceRva + quint32(*versionOffset)); // data entry: RVA, size, code page, reserved
    put32(out, quint32(version.size()));
    put32(out, 0);
    put32(out, 0);
    out += version;
    return out;
}

} // namespace

QByteArray build(const Options &options, Layout *layout)
{
    // Each section ahead of .rsrc is one page in memory and in the file.
    const int before = qBound(0, options.sectionsBefore, 2);
    const quint32 ResourceRva = SectionAlignment * quint32(1 + before);
    const quint32 resourceRaw = FileAlignment + SectionAlignment * quint32(before);
    int versionOffset = 0;
    const QByteArray resources = resourceSection(options, ResourceRva, &versionOffset);
    const quint32 rawSize = alignUp(quint32(resources.size()), FileAlignment);
    const bool plus = options.pe32Plus;
    const quint16 machine = options.machine ? options.machine : plus ? 0x8664 : 0x014c;

    QByteArray image("MZ");
    image.resize(0x3C, '\0');
    put32(image, PeOffset);
    image.resize(PeOffset, '\0');
    image += QByteArray("PE\0\0", 4);

    quint16 characteristics = 0x0002;          // executable image
    characteristics |= plus ? 0x0020 : 0x0100; // large address aware / 32-bit machine
    if (options.fileType == 2)
        characteristics |= 0x2000; // DLL
    put16(image, machine);
    put16(image, quint16(1 + before)); // sections
    put32(image, 0);                   // time stamp
    put32(image, 0);                   // symbol table
    put32(image, 0);                   // symbols
    put16(image, plus ? 240 : 224);
    put16(image, characteristics);

    const int optionalHeader = image.size();
    put16(image, plus ? 0x20b : 0x10b);
    put16(image, 14);          // linker version
    put32(image, 0);           // size of code
    put32(image, rawSize);     // initialised data
    put32(image, 0);           // uninitialised data
    put32(image, 0);           // entry point: there is no code
    put32(image, ResourceRva); // base of code
    if (plus) {
        put64(image, 0x140000000ull);
    } else {
        put32(image, ResourceRva); // base of data
        put32(image, 0x400000);
    }
    put32(image, SectionAlignment);
    put32(image, FileAlignment);
    for (quint16 field : {6, 0, 0, 0, 6, 0}) // OS, image and subsystem versions
        put16(image, field);
    put32(image, 0); // Win32 version value
    put32(image, ResourceRva + alignUp(quint32(resources.size()), SectionAlignment));
    put32(image, FileAlignment);                                           // size of headers
    put32(image, 0);                                                       // checksum
    put16(image, 2);                                                       // Windows GUI subsystem
    put16(image, 0);                                                       // DLL characteristics
    for (quint64 field : {0x100000ull, 0x1000ull, 0x100000ull, 0x1000ull}) // stack and heap
        plus ? put64(image, field) : put32(image, quint32(field));
    put32(image, 0);  // loader flags
    put32(image, 16); // data directories
    for (int index = 0; index < 16; ++index) {
        put32(image, index == 2 ? ResourceRva : 0);
        put32(image, index == 2 ? quint32(resources.size()) : 0);
    }

    const int sectionTable = image.size();
    const auto section = [&image](const char *name, quint32 size, quint32 rva, quint32 raw, quint32 offset) {
        image += QByteArray(name, 8);
        put32(image, size);
        put32(image, rva);
        put32(image, raw);
        put32(image, offset);
        put32(image, 0);          // relocations
        put32(image, 0);          // line numbers
        put32(image, 0);          // relocation and line number counts
        put32(image, 0x40000040); // initialised data, readable
    };
    for (int index = 0; index < before; ++index)
        section(index == 0 ? ".data\0\0\0" : ".rdata\0\0", SectionAlignment,
                SectionAlignment * quint32(1 + index), SectionAlignment,
                FileAlignment + SectionAlignment * quint32(index));
    section(".rsrc\0\0\0", quint32(resources.size()), ResourceRva, rawSize, resourceRaw);
    image.resize(FileAlignment, '\0');
    image.resize(int(resourceRaw), '\0');

    image += resources;
    padTo(image, int(FileAlignment));

    if (layout) {
        layout->peHeader = PeOffset;
        layout->optionalHeader = optionalHeader;
        layout->sectionTable = sectionTable;
        layout->resources = int(resourceRaw);
        layout->versionInfo = int(resourceRaw) + versionOffset;
        layout->versionInfoSize = int(resources.size()) - versionOffset;
        layout->fixedFileInfo = layout->versionInfo + 40;
    }
    return image;
}

bool writeFile(const QString &path, const Options &options, QString *error)
{
    QFile file(path);
    const QByteArray image = build(options);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(image) != image.size()) {
        if (error)
            *error = file.errorString();
        return false;
    }
    return true;
}

bool parseVersion(const QString &text, Version *version)
{
    const QStringList parts = text.split(u'.');
    if (parts.size() > 4)
        return false;
    Version parsed{0, 0, 0, 0};
    for (qsizetype i = 0; i < parts.size(); ++i) {
        bool ok = false;
        const uint number = parts[i].toUInt(&ok);
        if (!ok || number > 0xFFFF)
            return false;
        parsed[size_t(i)] = quint16(number);
    }
    *version = parsed;
    return true;
}

} // namespace PeWriter
