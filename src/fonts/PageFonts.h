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

    // "Prüfen": which chess fonts the system can use, and which files are not there.
    void Command5_Click();
    // Shows whether the selected font's file is among the fonts folders' files.
    void lstFonts_Click();
    void btnInstall_Click();
    void btnSendMissingFonts_Click();
    void btnCopyResult_Click();

    // True when the system knows a font of that name: an unknown name reads back as the
    // family put in its place.
    static bool IsFontAvailable(const QString &name);

private:
    PageHost &m_host;
    std::unique_ptr<Ui::PageFonts> ui;
};
