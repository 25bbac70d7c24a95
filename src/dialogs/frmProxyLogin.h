#pragma once

#include "net/ProxyLogin.h"

#include <QDialog>

#include <memory>

namespace Ui {
class frmProxyLogin;
}

// Asks for the user name and password a proxy wants, in the current language.
class frmProxyLogin : public QDialog
{
    Q_OBJECT

public:
    explicit frmProxyLogin(const QString &proxy, QWidget *parent = nullptr);
    ~frmProxyLogin() override;

    ProxyCredentials credentials() const;

private:
    std::unique_ptr<Ui::frmProxyLogin> ui;
};

// The prompt the window installs: the dialog over the active window.
ProxyCredentials askProxyLogin(const QString &proxy);
