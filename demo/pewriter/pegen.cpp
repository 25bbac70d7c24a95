#include "pewriter/PeWriter.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

// Writes a PE file with a version resource: pegen OUT.exe 13.2.0.2209 [--pe32plus] [--type N]
int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Writes a minimal PE file with a version resource."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("output"), QStringLiteral("File to write"));
    parser.addPositionalArgument(QStringLiteral("version"), QStringLiteral("File version, e.g. 13.2.0.2209"));
    const QCommandLineOption plusOption(QStringLiteral("pe32plus"),
                                        QStringLiteral("Write a PE32+ (64-bit) image"));
    const QCommandLineOption typeOption(QStringLiteral("type"),
                                        QStringLiteral("File type code (1 = application)"),
                                        QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption machineOption(QStringLiteral("machine"),
                                           QStringLiteral("COFF machine, e.g. 0x14c"), QStringLiteral("code"),
                                           QStringLiteral("0"));
    const QCommandLineOption stringOption(
        QStringLiteral("string"), QStringLiteral("Extra StringFileInfo value, e.g. ProductName=Pawnsketch"),
        QStringLiteral("key=value"));
    parser.addOptions({plusOption, typeOption, machineOption, stringOption});
    parser.process(app);

    QTextStream err(stderr);
    PeWriter::Options options;
    const QStringList args = parser.positionalArguments();
    bool typeOk = false;
    bool machineOk = false;
    options.fileType = parser.value(typeOption).toUInt(&typeOk, 0);
    const uint machine = parser.value(machineOption).toUInt(&machineOk, 0);
    if (args.size() != 2 || !PeWriter::parseVersion(args[1], &options.version) || !typeOk || !machineOk ||
        machine > 0xFFFF) {
        err << parser.helpText();
        return 2;
    }
    options.machine = quint16(machine);
    options.pe32Plus = parser.isSet(plusOption);
    for (const QString &pair : parser.values(stringOption)) {
        const qsizetype equals = pair.indexOf(u'=');
        if (equals <= 0) {
            err << "pegen: --string needs key=value\n";
            return 2;
        }
        options.strings.append({pair.left(equals), pair.mid(equals + 1)});
    }

    QString error;
    if (!PeWriter::writeFile(args[0], options, &error)) {
        err << "pegen: cannot write " << args[0] << ": " << error << '\n';
        return 1;
    }
    return 0;
}
