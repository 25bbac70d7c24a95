#include "core/Sha256.h"

#include <QCryptographicHash>
#include <QRandomGenerator>
#include <QtTest>

Q_DECLARE_METATYPE(Sha256::Engine)

// Each case with the SHA instructions (where the processor has them) and without; fed whole,
// in uneven pieces, and through the stream that hashes on a thread of its own.
class TestSha256 : public QObject
{
    Q_OBJECT

private slots:
    void digest_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QByteArray>("expected"); // "": what Qt's own SHA-256 says
        const auto both = [](const char *name, const QByteArray &data, const QByteArray &expected = {}) {
            for (const Sha256::Engine engine : {Sha256::Engine::Best, Sha256::Engine::Portable})
                QTest::addRow("%s, %s", name, engine == Sha256::Engine::Best ? "best" : "portable")
                    << data << QByteArray::fromHex(expected) << engine;
        };
        QTest::addColumn<Sha256::Engine>("engine");
        both("empty", {}, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
        both("abc", "abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
        both("a million a", QByteArray(1000000, 'a'),
             "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
        for (const int length : {55, 56, 63, 64, 65, 119, 120})
            both(qPrintable(QStringLiteral("%1 bytes").arg(length)), QByteArray(length, 'x'));
        QByteArray random(3 * 1024 * 1024 + 77, Qt::Uninitialized);
        QRandomGenerator rng(11);
        for (char &c : random)
            c = char(rng.bounded(256));
        both("random", random);
    }
    void digest()
    {
        QFETCH(QByteArray, data);
        QFETCH(QByteArray, expected);
        QFETCH(Sha256::Engine, engine);
        if (expected.isEmpty())
            expected = QCryptographicHash::hash(data, QCryptographicHash::Sha256);
        QCOMPARE(Sha256::hash(data, engine).toHex(), expected.toHex());

        Sha256 pieces(engine);
        Sha256Stream stream;
        stream.addData("left over from another file");
        stream.result(); // hashed before it is dropped
        stream.reset();
        for (qsizetype at = 0, step = 1; at < data.size(); at += step, step = step * 3 % 1000 + 1) {
            pieces.addData(QByteArrayView(data.constData() + at, qMin(step, data.size() - at)));
            stream.addData(data.mid(at, step));
        }
        QCOMPARE(pieces.result().toHex(), expected.toHex());
        QCOMPARE(stream.result().toHex(), expected.toHex());
    }
};

QTEST_GUILESS_MAIN(TestSha256)
#include "tst_sha256.moc"
