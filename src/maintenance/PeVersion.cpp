#include "maintenance/PeVersion.h"

#include <QBuffer>
#include <QIODevice>
#include <QtEndian>

#include <algorithm>
#include <optional>

namespace {

constexpr quint32 RtVersion = 16;
constexpr quint32 SubdirectoryBit = 0x80000000u;
constexpr qsizetype FixedInfoSize = 52;
constexpr qsizetype SectionHeaderSize = 40;
// VS_VERSIONINFO's wLength is 16 bits wide, so nothing useful lies beyond this.
constexpr quint32 MaxVersionBlock = 0x10000;

// Callers check the bounds before reading a field.
quint16 u16(const QByteArray &data, qsizetype pos)
{
    Q_ASSERT(pos >= 0 && pos + 2 <= data.size());
    return qFromLittleEndian<quint16>(data.constData() + pos);
}

quint32 u32(const QByteArray &data, qsizetype pos)
{
    Q_ASSERT(pos >= 0 && pos + 4 <= data.size());
    return qFromLittleEndian<quint32>(data.constData() + pos);
}

PeVersionResult failure(const char *why)
{
    PeVersionResult result;
    result.error = QString::fromLatin1(why);
    return result;
}

// A window onto the device; reads are all-or-nothing, so a short or empty
// answer always means "not inside the window".
class Region
{
public:
    Region(QIODevice &device, quint64 base, quint64 size) : m_device(device), m_base(base), m_size(size) {}

    QByteArray bytes(quint64 offset, quint64 length) const
    {
        if (length == 0 || offset > m_size || length > m_size - offset)
            return {};
        if (!m_device.seek(qint64(m_base + offset)))
            return {};
        QByteArray data = m_device.read(qint64(length));
        return data.size() == qsizetype(length) ? data : QByteArray();
    }

    quint64 size() const { return m_size; }

    Region sub(quint64 offset, quint64 length) const
    {
        if (offset > m_size)
            return Region(m_device, m_base, 0);
        return Region(m_device, m_base + offset, qMin(length, m_size - offset));
    }

private:
    QIODevice &m_device;
    quint64 m_base;
    quint64 m_size;
};

// File range holding the image bytes from `rva` to the end of their section's raw data.
Region mapRva(const Region &file, const QByteArray &sections, quint32 rva)
{
    for (qsizetype at = 0; at + SectionHeaderSize <= sections.size(); at += SectionHeaderSize) {
        const quint32 address = u32(sections, at + 12);
        const quint32 rawSize = u32(sections, at + 16);
        const quint32 rawOffset = u32(sections, at + 20);
        if (rva >= address && rva - address < rawSize)
            return file.sub(quint64(rawOffset) + (rva - address), rawSize - (rva - address));
    }
    return file.sub(0, 0);
}

// OffsetToData of the entry with the given id (or of the first entry), 0 when
// there is none. 0 is never a valid target, since the root directory is there.
quint32 findEntry(const Region &resources, quint32 directory, std::optional<quint32> id)
{
    const QByteArray head = resources.bytes(directory, 16);
    if (head.isEmpty())
        return 0;
    const quint32 count = quint32(u16(head, 12)) + u16(head, 14);
    const QByteArray entries = resources.bytes(quint64(directory) + 16, quint64(count) * 8);
    for (qsizetype at = 0; at + 8 <= entries.size(); at += 8) {
        if (!id || u32(entries, at) == *id)
            return u32(entries, at + 4);
    }
    return 0;
}

PeVersionResult parseVersionBlock(const QByteArray &block)
{
    // wLength, wValueLength, wType, then the key as UTF-16 with its NUL,
    // padded to 32 bits; the fixed info is the block's value.
    static const QByteArray key = [] {
        const QString text = QStringLiteral("VS_VERSION_INFO");
        return QByteArray(reinterpret_cast<const char *>(text.utf16()), (text.size() + 1) * 2);
    }();
    const qsizetype value = (6 + key.size() + 3) & ~3;
    if (block.size() < value || block.mid(6, key.size()) != key)
        return failure("version resource lacks the VS_VERSION_INFO key");
    const qsizetype end = qMin<qsizetype>(u16(block, 0), block.size());
    if (u16(block, 2) < FixedInfoSize || value + FixedInfoSize > end)
        return failure("version resource has no fixed file info");

    PeVersionResult result;
    result.ok = true;
    PeFixedFileInfo &info = result.info;
    quint32 *const fields[] = {&info.fileVersionMS,    &info.fileVersionLS, &info.productVersionMS,
                               &info.productVersionLS, &info.fileFlagsMask, &info.fileFlags,
                               &info.fileOS,           &info.fileType,      &info.fileSubtype,
                               &info.fileDateMS,       &info.fileDateLS};
    // Windows does not check the signature: a damaged one still shows the version.
    qsizetype at = value + 8; // past signature and structure version
    for (quint32 *field : fields) {
        *field = u32(block, at);
        at += 4;
    }
    return result;
}

} // namespace

PeVersionResult readPeVersion(QIODevice &device)
{
    if (!device.isOpen() || !device.isReadable() || device.isSequential())
        return failure("device is not open for random access");
    const Region file(device, 0, quint64(qMax<qint64>(device.size(), 0)));

    const QByteArray dos = file.bytes(0, 64);
    if (dos.isEmpty() || !dos.startsWith("MZ"))
        return failure("no MZ header");
    const quint64 pe = u32(dos, 0x3C);
    const QByteArray coff = file.bytes(pe, 24); // signature + COFF file header
    if (coff.isEmpty() || !coff.startsWith(QByteArray("PE\0\0", 4)))
        return failure("no PE signature");
    const quint16 sectionCount = u16(coff, 6);
    const quint16 optionalSize = u16(coff, 20);

    const QByteArray optional = file.bytes(pe + 24, optionalSize);
    const quint16 magic = optional.size() >= 2 ? u16(optional, 0) : 0;
    const qsizetype directories = magic == 0x10b ? 96 : magic == 0x20b ? 112 : 0;
    if (directories == 0)
        return failure("unknown optional header format");
    const qsizetype resourceEntry = directories + 2 * 8;
    if (optional.size() < resourceEntry + 8 || u32(optional, directories - 4) <= 2)
        return failure("no resource data directory");
    const quint32 resourceRva = u32(optional, resourceEntry);
    if (resourceRva == 0)
        return failure("no resources");

    const QByteArray sections = file.bytes(pe + 24 + optionalSize, quint64(sectionCount) * SectionHeaderSize);
    if (sections.isEmpty())
        return failure("section table lies outside the file");
    const Region resources = mapRva(file, sections, resourceRva);

    // Type, name, language: three fixed levels, so a directory that points
    // back at itself ends the walk instead of looping.
    const quint32 type = findEntry(resources, 0, RtVersion);
    if (!(type & SubdirectoryBit))
        return failure("no version resource");
    const quint32 name = findEntry(resources, type & ~SubdirectoryBit, std::nullopt);
    if (!(name & SubdirectoryBit))
        return failure("version resource has no name directory");
    const quint32 language = findEntry(resources, name & ~SubdirectoryBit, std::nullopt);
    if (language == 0 || (language & SubdirectoryBit))
        return failure("version resource has no language entry");

    const QByteArray dataEntry = resources.bytes(language, 16);
    if (dataEntry.isEmpty())
        return failure("version resource data entry lies outside the resources");
    const Region data = mapRva(file, sections, u32(dataEntry, 0));
    const QByteArray block =
        data.bytes(0, std::min<quint64>({u32(dataEntry, 4), MaxVersionBlock, data.size()}));
    if (block.isEmpty())
        return failure("version resource data lies outside the file");
    return parseVersionBlock(block);
}

PeVersionResult readPeVersion(const QByteArray &image)
{
    QBuffer buffer;
    buffer.setData(image);
    buffer.open(QIODevice::ReadOnly);
    return readPeVersion(buffer);
}
