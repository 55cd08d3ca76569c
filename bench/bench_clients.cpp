#include "support/syncrig.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace
{

constexpr int kContacts = 10000;

// Half the contacts join by the group card's member list, half by category; companies repeat in
// other spellings, as real address books do.
QByteArray contactCard(int i)
{
    const QByteArray n = QByteArray::number(i);
    const QByteArray company = (i % 3 == 0 ? "COMPANY " : "Company ") + QByteArray::number(i % 4000);
    QByteArray card =
        "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:contact-" + n + "\r\nN:Person" + n + ";Given;;;\r\nFN:Given Person" + n +
        "\r\nORG:" + company + ";Sales\r\nTEL;TYPE=WORK:+1 555 0100\r\nEMAIL:p" + n +
        "@example.org\r\nNOTE:A longer note that the reader has to get past\\, folded over two li\r\n nes.\r\n";
    if (i % 2)
        card += "CATEGORIES:Veltrick Clients,Work\r\n";
    return card + "END:VCARD\r\n";
}

QByteArray groupCard()
{
    QByteArray card = "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:Veltrick Clients\r\nUID:urn:uuid:group-1\r\n";
    for (int i = 0; i < kContacts; i += 2)
        card += "MEMBER:urn:uuid:contact-" + QByteArray::number(i) + "\r\n";
    return card + "END:VCARD\r\n";
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

void runSync(benchmark::State& state, const QString& folder)
{
    testing::SyncRig rig(folder);
    for (auto _ : state)
        rig.sync.syncaddressbook2();
    if (rig.listFile().size() != 4000 || !rig.dialogs.messages.isEmpty())
        state.SkipWithError("the sync did not find the 4000 clients");
}

void BM_SyncFolderOfFiles(benchmark::State& state)
{
    QTemporaryDir dir;
    writeFile(dir.path() + QStringLiteral("/group.vcf"), groupCard());
    for (int i = 0; i < kContacts; ++i)
        writeFile(dir.path() + QStringLiteral("/contact-%1.vcf").arg(i), contactCard(i));
    runSync(state, dir.path());
}

void BM_SyncOneExportFile(benchmark::State& state)
{
    QTemporaryDir dir;
    QByteArray all = groupCard();
    for (int i = 0; i < kContacts; ++i)
        all += contactCard(i);
    writeFile(dir.path() + QStringLiteral("/export.vcf"), all);
    runSync(state, dir.path());
}

} // namespace

BENCHMARK(BM_SyncFolderOfFiles)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SyncOneExportFile)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
