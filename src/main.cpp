#include "app/SupportKitMain.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("SupportKit"));
    return supportKitMain(QApplication::arguments().mid(1));
}
