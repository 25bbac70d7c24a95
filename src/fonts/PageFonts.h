#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageFonts;
}

// Tab "Fonts": checking the chess fonts and making missing ones available.
class PageFonts : public QWidget
{
    Q_OBJECT

public:
    explicit PageFonts(PageHost &host, QWidget *parent = nullptr);
    ~PageFonts() override;

private:
    PageHost &m_host;
    std::unique_ptr<Ui::PageFonts> ui;
};
