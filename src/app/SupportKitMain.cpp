#include "app/SupportKitMain.h"

#include "app/frmSupportKit.h"
#include "dialogs/frmProxyLogin.h"

#include <QApplication>

int supportKitMain(const QStringList &arguments)
{
    setProxyPrompt(askProxyLogin);
    frmSupportKit window;
    if (!window.Form_Load(arguments.join(u' ')))
        return window.exitCode();
    window.show();
    return QApplication::exec();
}
