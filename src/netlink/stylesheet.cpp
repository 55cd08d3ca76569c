#include "netlink/stylesheet.h"

#include "netlink/apptexts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace netlink
{

namespace
{
// A style sheet is a few kilobytes; anything this large is not ours and is not read into memory.
constexpr qint64 kMaxStyleSheetBytes = 1024 * 1024;
} // namespace

QStringList styleSheetCandidates(const QString& appDir)
{
    const QDir dir(appDir);
    QStringList paths{
        dir.filePath(kStyleSheetName),
        QDir::cleanPath(dir.filePath(QStringLiteral("../share/veltrick/")) + QLatin1Char('/') + kStyleSheetName)};
#ifdef VELTRICK_DATADIR
    const QString installed = QStringLiteral(VELTRICK_DATADIR "/") + kStyleSheetName;
    if (!paths.contains(installed))
        paths << installed;
#endif
    return paths;
}

platform::Result loadStyleSheet(const QString& appDir, QString& text)
{
    text.clear();
    for (const QString& path : styleSheetCandidates(appDir)) {
        const QFileInfo info(path);
        if (!info.isFile())
            continue;
        if (info.size() > kMaxStyleSheetBytes)
            return platform::Result::failure(27, kAppStyleSheetFailure);
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return platform::Result::failure(13, kAppStyleSheetFailure);
        const QByteArray bytes = file.read(kMaxStyleSheetBytes + 1);
        if (file.error() != QFileDevice::NoError || bytes.size() > kMaxStyleSheetBytes)
            return platform::Result::failure(5, kAppStyleSheetFailure);
        text = QString::fromUtf8(bytes);
        return platform::Result::success();
    }
    return platform::Result::failure(2, kAppStyleSheetFailure);
}

} // namespace netlink
