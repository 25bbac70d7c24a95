#include "help/HelpWindow.h"

#include "core/HelpViewer.h"
#include "help/ChmFile.h"
#include "localisation/LanguageState.h"
#include "localisation/LocaliseForms.h"

#include "ui_HelpWindow.h"

#include <QApplication>
#include <QFileInfo>
#include <QPointer>
#include <QUrl>

namespace {
QPointer<HelpWindow> &openWindow()
{
    static QPointer<HelpWindow> window;
    return window;
}

// Sitemap pages are named relative to the file's root.
QString rootPath(const QString &local)
{
    return local.startsWith(u'/') ? local : u'/' + local;
}
} // namespace

HelpWindow::HelpWindow(const QString &file, QWidget *parent)
    : QWidget(parent, Qt::Window), ui(std::make_unique<Ui::HelpWindow>()),
      m_chm(std::make_unique<ChmFile>(file)), m_path(file)
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    // The program ends with its main window, whether help is open or not.
    setAttribute(Qt::WA_QuitOnClose, false);
    localiseForm(this);
    ui->tabNavigation->setTabText(0, lngText(QStringLiteral("T19230"), QStringLiteral("Inhalt")));
    ui->tabNavigation->setTabText(1, lngText(QStringLiteral("T19231"), QStringLiteral("Index")));
    ui->tabNavigation->setTabText(2, lngText(QStringLiteral("T19232"), QStringLiteral("Suche")));
    setWindowTitle(QFileInfo(file).fileName());
    ui->splitter->setStretchFactor(1, 3);
    ui->browser->setReader([this](const QString &path) { return m_chm->read(path); });

    connect(ui->browser, &QTextBrowser::anchorClicked, this, [this](const QUrl &url) {
        if (url.scheme() == QLatin1String("chm"))
            showTopic(url.path() + (url.hasFragment() ? u'#' + url.fragment() : QString()));
    });
    connect(ui->treeContents, &QTreeWidget::itemClicked, this,
            [this](QTreeWidgetItem *item) { openItem(item->data(0, Qt::UserRole).toString()); });
    connect(ui->lstIndex, &QListWidget::itemActivated, this,
            [this](QListWidgetItem *item) { openItem(item->data(Qt::UserRole).toString()); });
    connect(ui->lstIndex, &QListWidget::itemClicked, this,
            [this](QListWidgetItem *item) { openItem(item->data(Qt::UserRole).toString()); });
    connect(ui->txtIndex, &QLineEdit::textEdited, this, &HelpWindow::filterIndex);
    connect(ui->cmdSearch, &QPushButton::clicked, this, &HelpWindow::runSearch);
    connect(ui->txtSearch, &QLineEdit::returnPressed, this, &HelpWindow::runSearch);
    connect(ui->lstSearch, &QListWidget::itemClicked, this,
            [this](QListWidgetItem *item) { openItem(item->data(Qt::UserRole).toString()); });
    fillNavigation();
}

HelpWindow::~HelpWindow() = default;

bool HelpWindow::isOpen() const
{
    return m_chm->isOpen();
}

HelpWindow *HelpWindow::current()
{
    return openWindow();
}

bool HelpWindow::showRequest(const Platform::HelpRequest &request)
{
    QPointer<HelpWindow> &window = openWindow();
    if (window && window->file() != request.file) {
        // Another language's file: the old window goes (later, as it deletes itself).
        window->close();
        window.clear();
    }
    if (!window) {
        auto *created = new HelpWindow(request.file);
        if (!created->isOpen()) {
            delete created;
            return false;
        }
        window = created;
    }
    // A modal dialog (the action dialog) would block a window of its own: the help then
    // belongs to the dialog, and goes with it.
    QWidget *modal = QApplication::activeModalWidget();
    if (modal && modal != window->parentWidget())
        window->setParent(modal, Qt::Window);
    switch (request.command) {
    case Platform::HelpCommand::Contents:
        window->showContents();
        break;
    case Platform::HelpCommand::Topic:
        window->showContext(request.contextId);
        break;
    case Platform::HelpCommand::Index:
        window->showIndex();
        break;
    case Platform::HelpCommand::Search:
        window->showSearch(request.query);
        break;
    }
    window->show();
    window->raise();
    window->activateWindow();
    return true;
}

void HelpWindow::fillNavigation()
{
    QList<QTreeWidgetItem *> parents;
    for (const SitemapEntry &entry : m_chm->contents()) {
        parents.resize(qMin<qsizetype>(parents.size(), entry.depth));
        auto *item =
            parents.isEmpty() ? new QTreeWidgetItem(ui->treeContents) : new QTreeWidgetItem(parents.last());
        item->setText(0, entry.name);
        item->setData(0, Qt::UserRole, entry.local);
        parents.append(item);
    }
    ui->treeContents->expandAll();
    for (const SitemapEntry &entry : m_chm->index()) {
        auto *item = new QListWidgetItem(entry.name, ui->lstIndex);
        item->setData(Qt::UserRole, entry.local);
    }
}

void HelpWindow::showContext(quint32 contextId)
{
    const QString topic = m_chm->topicOf(contextId);
    if (topic.isEmpty()) {
        showContents();
        ui->lblNote->setVisible(true);
        return;
    }
    ui->tabNavigation->setCurrentWidget(ui->tabContents);
    showTopic(topic);
}

void HelpWindow::showContents()
{
    ui->tabNavigation->setCurrentWidget(ui->tabContents);
    showTopic(m_chm->defaultTopic());
}

void HelpWindow::showIndex()
{
    ui->tabNavigation->setCurrentWidget(ui->tabIndex);
    if (currentTopic().isEmpty())
        showTopic(m_chm->defaultTopic());
    ui->txtIndex->setFocus();
}

void HelpWindow::showSearch(const QString &query)
{
    ui->tabNavigation->setCurrentWidget(ui->tabSearch);
    if (currentTopic().isEmpty())
        showTopic(m_chm->defaultTopic());
    ui->txtSearch->setText(query);
    runSearch();
}

void HelpWindow::runSearch()
{
    ui->lstSearch->clear();
    for (const ChmFile::Hit &hit : m_chm->search(ui->txtSearch->text())) {
        auto *item = new QListWidgetItem(hit.title, ui->lstSearch);
        item->setData(Qt::UserRole, hit.topic);
    }
}

void HelpWindow::filterIndex(const QString &text)
{
    // Like the index of a help viewer: the first keyword that starts with what is typed.
    for (int row = 0; row < ui->lstIndex->count(); ++row) {
        if (ui->lstIndex->item(row)->text().startsWith(text, Qt::CaseInsensitive)) {
            ui->lstIndex->setCurrentRow(row);
            return;
        }
    }
}

void HelpWindow::openItem(const QString &local)
{
    if (!local.isEmpty())
        showTopic(rootPath(local));
}

void HelpWindow::showTopic(const QString &topic)
{
    if (topic.isEmpty())
        return;
    const QUrl url = ui->browser->source().resolved(QUrl(topic));
    const QString path = m_chm->objectPath(url.path());
    if (path.isEmpty())
        return;
    ui->lblNote->setVisible(false);
    QUrl target;
    target.setScheme(QStringLiteral("chm"));
    target.setPath(path);
    target.setFragment(url.fragment());
    ui->browser->setSource(target, QTextDocument::HtmlResource);
}

QString HelpWindow::currentTopic() const
{
    return ui->browser->source().path();
}
