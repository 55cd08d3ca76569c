#include "storage/preset_file.h"

#include "storage/binary_stream.h"

namespace storage
{

namespace
{

PresetJobList decodeJobs(const QByteArray& bytes, int fieldsPerJob, bool* complete)
{
    PresetJobList jobs;
    ByteReader reader(bytes);
    qint32 count = 0;
    bool whole = reader.readI32(count);
    if (whole && count > 0)
        jobs.reserve(qMin<qsizetype>(count, reader.remaining() / fieldsPerJob));
    for (qint32 i = 0; whole && i < count; ++i) {
        QByteArrayView fields[5];
        for (int f = 0; whole && f < fieldsPerJob; ++f)
            whole = reader.readPascal(fields[f]);
        if (!whole)
            break;
        PresetJob job;
        job.job = QString::fromUtf8(fields[0]);
        job.project = QString::fromUtf8(fields[1]);
        job.budget = QString::fromUtf8(fields[2]);
        job.closed = QString::fromUtf8(fields[3]);
        if (fieldsPerJob > 4)
            job.closedTag = QString::fromUtf8(fields[4]);
        jobs.append(std::move(job));
    }
    if (complete)
        *complete = whole;
    return jobs;
}

void setCell(PresetJob& job, int cell, const QString& text)
{
    switch (cell) {
    case 0:
        job.job = text;
        break;
    case 1:
        job.project = text;
        break;
    case 2:
        job.budget = text;
        break;
    case 3:
        job.closed = text;
        break;
    case 4:
        job.active = text;
        break;
    default:
        job.extra.append(text);
        break;
    }
}

} // namespace

QByteArray encodePresetJobs(const PresetJobList& jobs, int* cutFields)
{
    QByteArray out;
    out.reserve(4 + jobs.size() * 40);
    ByteWriter writer(out);
    writer.writeI32(static_cast<qint32>(jobs.size()));
    int cuts = 0;
    for (const PresetJob& job : jobs) {
        for (const QString* text : {&job.job, &job.project, &job.budget, &job.closed, &job.closedTag}) {
            bool cut = false;
            writer.writePascal(utf8ForPascal(*text, cut));
            cuts += cut ? 1 : 0;
        }
    }
    if (cutFields)
        *cutFields = cuts;
    return out;
}

PresetJobList decodePresetJobs(const QByteArray& bytes, bool* complete)
{
    return decodeJobs(bytes, 5, complete);
}

PresetJobList decodeOldPresetJobs(const QByteArray& bytes, bool* complete)
{
    return decodeJobs(bytes, 4, complete);
}

PresetImport parsePresetImport(const QByteArray& text)
{
    PresetImport import;
    QString all = QString::fromUtf8(text);
    if (all.startsWith(QChar(0xfeff)))
        all.remove(0, 1);
    const QStringView view(all);
    qsizetype start = 0;
    while (start < view.size()) {
        qsizetype end = start;
        while (end < view.size() && view[end] != u'\n' && view[end] != u'\r')
            ++end;
        const QStringView line = view.sliced(start, end - start);
        start = end;
        // One line end: CR LF, CR or LF.
        if (start < view.size() && view[start] == u'\r')
            ++start;
        if (start < view.size() && view[start] == u'\n' && (start == end || view[end] == u'\r'))
            ++start;
        if (line.isEmpty())
            continue;
        PresetJob job;
        int cell = 0;
        for (const QStringView field : line.tokenize(u'\t'))
            setCell(job, cell++, field.toString());
        import.columnCount = qMax(import.columnCount, cell);
        import.jobs.append(std::move(job));
    }
    return import;
}

QByteArray formatPresetExport(const PresetJobList& jobs)
{
    QString text;
    for (const PresetJob& job : jobs) {
        text += job.job + u'\t' + job.project + u'\t' + job.budget + u'\t' + job.closed + u'\n';
    }
    return text.toUtf8();
}

} // namespace storage
