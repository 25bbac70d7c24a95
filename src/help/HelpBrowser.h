#pragma once

#include <QTextBrowser>

#include <functional>

// Shows pages of a compiled help file: pages, pictures and style sheets are read from the
// file instead of the disk, through reader (an object path such as "/start.html").
class HelpBrowser : public QTextBrowser
{
    Q_OBJECT

public:
    using Reader = std::function<QByteArray(const QString &objectPath)>;
    explicit HelpBrowser(QWidget *parent = nullptr);
    void setReader(Reader reader) { m_reader = std::move(reader); }

    QVariant loadResource(int type, const QUrl &name) override;

private:
    Reader m_reader;
};
