#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageMailHelp;
}

// Tab "Hilfe zum Mailversand": how sending by mail program or web mail works.
class PageMailHelp : public QWidget
{
    Q_OBJECT

public:
    explicit PageMailHelp(PageHost &host, QWidget *parent = nullptr);
    ~PageMailHelp() override;

private:
    PageHost &m_host;
    std::unique_ptr<Ui::PageMailHelp> ui;
};
