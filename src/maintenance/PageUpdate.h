#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageUpdate;
}

// Tab "Update": installing a picked update file and putting a backed-up program file back.
class PageUpdate : public QWidget
{
    Q_OBJECT

public:
    explicit PageUpdate(PageHost &host, QWidget *parent = nullptr);
    ~PageUpdate() override;

private:
    PageHost &m_host;
    std::unique_ptr<Ui::PageUpdate> ui;
};
