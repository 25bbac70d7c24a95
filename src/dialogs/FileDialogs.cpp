#include "dialogs/FileDialogs.h"

#include <QFileDialog>
#include <QFileSystemModel>
#include <QSortFilterProxyModel>
#include <QStringList>

#include <utility>

namespace {

FileDialogAnswerer &answerer()
{
    static FileDialogAnswerer a;
    return a;
}

// Qt takes a name filter's masks from the text in its parentheses, which would offer
// every *.exe for "Pawnsketch Update (*.exe)" and nothing sensible for
// "(*.fen, *.pgn, ...)". The descriptions therefore only label the choices; this model
// decides what the dialog offers, by the pattern of the chosen description.
class PatternFilterModel final : public QSortFilterProxyModel
{
public:
    explicit PatternFilterModel(QObject *parent) : QSortFilterProxyModel(parent) {}

    void setPattern(const QString &pattern)
    {
        m_pattern = pattern;
        invalidateFilter();
    }

    // The file system model already sorts folders first; keep its order.
    void sort(int column, Qt::SortOrder order) override
    {
        if (sourceModel())
            sourceModel()->sort(column, order);
    }

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override
    {
        const auto *files = qobject_cast<const QFileSystemModel *>(sourceModel());
        if (!files || m_pattern.isEmpty())
            return true;
        const QModelIndex index = files->index(sourceRow, 0, sourceParent);
        return files->isDir(index) || matchesFilterPattern(files->fileName(index), m_pattern);
    }

private:
    QString m_pattern;
};

QString runDialog(const FileDialogRequest &request)
{
    QFileDialog dialog(request.owner, request.title, request.initialFolder);
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    const bool save = request.mode == FileDialogMode::Save;
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);

    auto *filter = new PatternFilterModel(&dialog);
    dialog.setProxyModel(filter);
    auto *files = qobject_cast<QFileSystemModel *>(filter->sourceModel());

    QStringList descriptions;
    for (const FileFilter &f : request.filters)
        descriptions << f.description;
    // Applies the pattern of the chosen description and drops the masks Qt derived
    // from the text.
    const auto useFilter = [&request, filter, files](const QString &description) {
        for (const FileFilter &f : request.filters) {
            if (f.description == description) {
                filter->setPattern(f.pattern);
                break;
            }
        }
        if (files)
            files->setNameFilters({});
    };
    if (!descriptions.isEmpty()) {
        dialog.setNameFilters(descriptions);
        dialog.selectNameFilter(descriptions.first());
        useFilter(descriptions.first());
    }
    // Qt applies its own masks before it reports the choice, so ours win.
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, useFilter);

    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.selectedFiles().value(0);
}

} // namespace

QString SelectFile(int filterIndex, QWidget *owner, const QString &title, const QString &initialFolder,
                   FileDialogMode mode)
{
    return ShowOpen({owner, fileFilters(filterIndex), title, initialFolder, mode});
}

QString ShowOpen(const FileDialogRequest &request)
{
    if (answerer())
        return answerer()(request);
    return runDialog(request);
}

void setFileDialogAnswererForTesting(FileDialogAnswerer answer)
{
    answerer() = std::move(answer);
}
