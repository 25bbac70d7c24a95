#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageRepair;
}

// Tab "Reparaturfunktionen 2": downloading the current program file and restoring a backup.
class PageRepair : public QWidget
{
    Q_OBJECT

public:
    explicit PageRepair(PageHost &host, QWidget *parent = nullptr);
    ~PageRepair() override;

    // The busy marker lives on the download button: while it is set the window refuses
    // to close, because ending then would leave a half-written file.
    void setBusy(bool busy);
    bool isBusy() const;

private:
    PageHost &m_host;
    std::unique_ptr<Ui::PageRepair> ui;
};
