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

platform::Result loadStyleSheet(const QString& appDir, QString& text)
{
    text.clear();
    const QString path = QDir::cleanPath(appDir + QLatin1Char('/') + kStyleSheetPath);
    const QFileInfo info(path);
    if (!info.isFile())
        return platform::Result::failure(2, kAppStyleSheetFailure);
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

} // namespace netlink
