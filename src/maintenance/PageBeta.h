#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageBeta;
}

// Tab "BETA-Version": installing a picked beta program file.
class PageBeta : public QWidget
{
    Q_OBJECT

public:
    explicit PageBeta(PageHost &host, QWidget *parent = nullptr);
    ~PageBeta() override;

private:
    PageHost &m_host;
    std::unique_ptr<Ui::PageBeta> ui;
};
