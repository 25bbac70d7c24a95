#include "core/TextFile.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

namespace {
// Windows-1252 differs from Latin-1 only in 0x80..0x9F; the five undefined bytes
// keep their C1 code points, as Windows' own conversion does.
constexpr char16_t kCp1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

QString decodeCp1252(QByteArrayView bytes)
{
    QString out;
    out.resize(bytes.size());
    QChar *dst = out.data();
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        *dst++ = (b >= 0x80 && b < 0xA0) ? QChar(kCp1252High[b - 0x80]) : QChar(b);
    }
    return out;
}
} // namespace

QString decodeInstallationText(const QByteArray &bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF")) {
        return QString::fromUtf8(bytes.constData() + 3, bytes.size() - 3);
    }
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError()) {
        return text;
    }
    return decodeCp1252(bytes);
}

bool isInstallationUtf8(QByteArrayView bytes)
{
    return bytes.startsWith("\xEF\xBB\xBF") || bytes.isValidUtf8();
}

QString decodeInstallationPiece(QByteArrayView bytes, bool utf8)
{
    return utf8 ? QString::fromUtf8(bytes) : decodeCp1252(bytes);
}

bool readInstallationText(const QString &path, QString &text, qint64 maxBytes)
{
    text.clear();
    const QFileInfo info(path);
    QFile file(path);
    if (!info.isFile() || info.size() > maxBytes || !file.open(QIODevice::ReadOnly))
        return false;
    text = decodeInstallationText(file.readAll());
    return true;
}
