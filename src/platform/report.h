#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace platform
{

// A printed report as the printer draws it: a heading on the first page, a table of rows each with its
// note under it, a total after them, and the user and page number on every page.
struct Report
{
    struct Row
    {
        QStringList cells; // one per heading
        QString note;
    };

    QString title;      // the first page's heading, with the date when it is wanted
    QString footer;     // left of the page number on every page: "User: ..."
    QString pagePrefix; // before the page number
    QStringList headings;
    QList<Row> rows;
    QString total; // the line after the rows
};

} // namespace platform
