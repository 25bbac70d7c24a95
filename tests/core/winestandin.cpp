#include <QDir>
#include <QSaveFile>

// Wine for the launch test: writes its working folder and then each argument, one per
// line, to the file that SK_WINE_RECORD names. The file appears whole or not at all.
int main(int argc, char *argv[])
{
    QSaveFile out(qEnvironmentVariable("SK_WINE_RECORD"));
    if (!out.open(QIODevice::WriteOnly))
        return 1;
    out.write(QDir::currentPath().toUtf8() + '\n');
    for (int i = 1; i < argc; ++i)
        out.write(QByteArray(argv[i]) + '\n');
    return out.commit() ? 0 : 1;
}
