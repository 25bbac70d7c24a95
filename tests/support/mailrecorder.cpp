#include <QCoreApplication>
#include <QSaveFile>

// A mail program for the tests: writes every argument after the first to the file the first
// one names, as UTF-8, each followed by a NUL. The file appears whole or not at all.
int main(int argc, char *argv[])
{
    const QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2)
        return 2;
    QSaveFile out(arguments.at(1));
    if (!out.open(QIODevice::WriteOnly))
        return 1;
    for (const QString &argument : arguments.mid(2)) {
        out.write(argument.toUtf8());
        out.write("", 1);
    }
    return out.commit() ? 0 : 1;
}
