#include "dialogs/frmProxyLogin.h"

#include "localisation/LanguageState.h"
#include "localisation/LocaliseForms.h"

#include "ui_frmProxyLogin.h"

#include <QApplication>

frmProxyLogin::frmProxyLogin(const QString &proxy, QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmProxyLogin>())
{
    ui->setupUi(this);
    localiseForm(this);
    setWindowTitle(lngText(QStringLiteral("T19373"), QStringLiteral("Proxy-Anmeldung")));
    ui->lblProxyHost->setText(proxy);
    connect(ui->cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

frmProxyLogin::~frmProxyLogin() = default;

ProxyCredentials frmProxyLogin::credentials() const
{
    return {result() == QDialog::Accepted, ui->txtUser->text(), ui->txtPassword->text()};
}

ProxyCredentials askProxyLogin(const QString &proxy)
{
    frmProxyLogin dialog(proxy, QApplication::activeWindow());
    dialog.exec();
    return dialog.credentials();
}
