#pragma once

#include "core/Platform.h"

#include <QWidget>

#include <memory>

class ChmFile;
class QTreeWidgetItem;
class QListWidgetItem;

namespace Ui {
class HelpWindow;
}

// The help window where the system has no viewer for compiled help: it reads the help file
// itself and shows its pages, table of contents, index and a full-text search.
class HelpWindow : public QWidget
{
    Q_OBJECT

public:
    explicit HelpWindow(const QString &file, QWidget *parent = nullptr);
    ~HelpWindow() override;

    // Shows what the request asks in the one help window, opened on the request's file;
    // false when the file cannot be read. The viewer Platform::showHelp reaches on Linux.
    static bool showRequest(const Platform::HelpRequest &request);
    // The help window open now, nullptr when none is.
    static HelpWindow *current();

    bool isOpen() const;
    QString file() const { return m_path; }
    // The topic of a context id; the contents with a note when the file does not know it.
    void showContext(quint32 contextId);
    void showContents();
    void showIndex();
    void showSearch(const QString &query);
    // An object path ("/start.html") or a link relative to the page shown.
    void showTopic(const QString &topic);
    QString currentTopic() const;

private:
    void fillNavigation();
    void runSearch();
    void filterIndex(const QString &text);
    void openItem(const QString &local);

    std::unique_ptr<Ui::HelpWindow> ui;
    std::unique_ptr<ChmFile> m_chm;
    QString m_path;
};
