#include "budgets/presetjobs.h"

#include "core/timetext.h"
#include "platform/yieldgate.h"
#include "storage/binary_stream.h"

#include <algorithm>

namespace budgets
{

preSetJobsWin::preSetJobsWin(storage::PresetJobList& list, Services services) : joblst(list), m_s(std::move(services))
{
    Left = m_s.prefs.presetwinLeft;
    Top = m_s.prefs.presetwinTop;
    Width = m_s.prefs.presetwinWidth;
    Height = m_s.prefs.presetwinHeight;
}

QString preSetJobsWin::filePath(const QString& name) const
{
    return m_s.folder + QLatin1Char('/') + name;
}

void preSetJobsWin::readlocalprst()
{
    // No file is an empty list, without a word.
    QByteArray bytes;
    if (m_s.files.read(filePath(storage::kPresetJobsFileName), bytes).ok())
        joblst = storage::decodePresetJobs(bytes);
    emit rowsReset();
}

void preSetJobsWin::readlocal5prst()
{
    QByteArray bytes;
    if (m_s.files.read(filePath(storage::kOldPresetJobsFileName), bytes).ok())
        joblst = storage::decodeOldPresetJobs(bytes);
    emit rowsReset();
}

void preSetJobsWin::readserverprst()
{
    const QString chosen = m_s.dialogs.openFile(kPSImportBtn, m_s.desktopFolder, kPSImportFilter);
    if (chosen.isEmpty())
        return;
    QByteArray bytes;
    if (m_s.files.read(chosen, bytes).ok()) {
        storage::PresetImport import = storage::parsePresetImport(bytes);
        // A field the file could not hold is cut between characters here, so that the list shows what
        // is stored; the user hears of it once.
        bool anyCut = false;
        platform::YieldGate gate(m_s.desktop);
        for (storage::PresetJob& job : import.jobs) {
            for (QString* text : {&job.job, &job.project, &job.budget, &job.closed}) {
                bool cut = false;
                const QByteArray bytes = storage::utf8ForPascal(*text, cut);
                if (cut)
                    *text = QString::fromUtf8(bytes);
                anyCut = anyCut || cut;
            }
            gate.step();
        }
        joblst = std::move(import.jobs);
        columnCount = import.columnCount;
        if (anyCut && !m_toldCut) {
            m_toldCut = true;
            m_s.dialogs.message(kFieldsCut);
        }
    }
    joblistupdate();
    ListIndex = -1;
    emit rowsReset();
}

bool preSetJobsWin::joblistupdate()
{
    const bool written =
        m_s.files.write(filePath(storage::kPresetJobsFileName), storage::encodePresetJobs(joblst)).ok();
    if (!written) {
        // The list in memory goes on; the next change tries again.
        m_s.desktop.beep();
        m_s.dialogs.message(kWriteFail);
    }
    if (m_s.dependants)
        m_s.dependants();
    emit changed();
    return written;
}

void preSetJobsWin::exportList()
{
    const QString path = m_s.desktopFolder + QLatin1Char('/') + kPSExportFileName;
    const platform::Result written = m_s.files.write(path, storage::formatPresetExport(joblst));
    m_s.desktop.beep();
    m_s.dialogs.message(written.ok() ? kPSExportDialogText : kWriteFail + QStringLiteral("\n\n") + written.message);
}

const storage::PresetJob* preSetJobsWin::selectedJob() const
{
    return ListIndex >= 0 && ListIndex < joblst.size() ? &joblst[ListIndex] : nullptr;
}

int preSetJobsWin::jobLimit() const
{
    const storage::PresetJob* selected = selectedJob();
    return std::max(kJobLimit, selected ? int(selected->job.size()) : 0);
}

int preSetJobsWin::projectLimit() const
{
    const storage::PresetJob* selected = selectedJob();
    return std::max(kProjectLimit, selected ? int(selected->project.size()) : 0);
}

void preSetJobsWin::joblst_Change(int row)
{
    ListIndex = row >= 0 && row < joblst.size() ? row : -1;
    // A selected job can be changed at once; with none, Add waits for a job number and a project.
    addjobEnabled = ListIndex >= 0;
    if (ListIndex >= 0) {
        const storage::PresetJob& job = joblst[ListIndex];
        focus = Focus::EditField2;
        killjobEnabled = true;
        EditField2.Text = job.job;
        EditField3.Text = job.project;
        EditField4.Text = job.budget;
        EditField5 = {job.closed, true};
        addjobCaption = kPSChangeBtn;
    } else {
        killjobEnabled = false;
        addjobCaption = kPSAddBtn;
        EditField2.Text.clear();
        EditField3.Text.clear();
        EditField4.Text.clear();
        EditField5 = {QString(), false};
    }
    emit changed();
}

void preSetJobsWin::joblst_DoubleClick()
{
    // A way back to adding: nothing selected and the fields empty.
    ListIndex = -1;
    focus = Focus::EditField2;
    EditField5 = {QString(), false};
    EditField4.Text.clear();
    EditField2.Text.clear();
    killjobEnabled = false;
    addjobCaption = kPSAddBtn;
    emit changed();
}

bool preSetJobsWin::emptyJobFirst(Field& field, const QString& text)
{
    // A job number comes first: anything typed before one is taken back.
    if (EditField2.Text.isEmpty()) {
        field.Text.clear();
        focus = Focus::EditField2;
        emit changed();
        return true;
    }
    field.Text = text;
    return false;
}

void preSetJobsWin::EditField2_TextChange(const QString& text)
{
    EditField2.Text = text.left(jobLimit()).toUpper();
    emit changed();
}

void preSetJobsWin::EditField3_TextChange(const QString& text)
{
    if (emptyJobFirst(EditField3, text.left(projectLimit())))
        return;
    addjobEnabled = true;
    emit changed();
}

void preSetJobsWin::EditField4_TextChange(const QString& text)
{
    if (!emptyJobFirst(EditField4, text))
        emit changed();
}

void preSetJobsWin::EditField5_TextChange(const QString& text)
{
    if (!emptyJobFirst(EditField5, text))
        emit changed();
}

bool preSetJobsWin::EditField2_KeyDown(QChar key)
{
    if (key != QLatin1Char(':'))
        return false;
    m_s.desktop.beep();
    return true;
}

bool preSetJobsWin::hoursKeyDown(QChar key)
{
    const char16_t c = key.unicode();
    if ((c >= u'0' && c <= u'9') || c == 13 || c == 8 || c == 9 || c == 3)
        return false;
    m_s.desktop.beep();
    return true;
}

void preSetJobsWin::clearEditRow()
{
    EditField5.Text.clear();
    EditField4.Text.clear();
    EditField3.Text.clear();
    EditField2.Text.clear();
    // Empty fields have nothing to add or change with, until they are typed in or a job is picked.
    addjobEnabled = false;
    focus = Focus::EditField2;
}

void preSetJobsWin::addjob_Action()
{
    const int row = ListIndex;
    storage::PresetJob job;
    job.job = EditField2.Text.toUpper();
    job.project = EditField3.Text;
    job.budget = core::fmt00(core::Val(EditField4.Text));
    if (row < 0) {
        job.closed = QStringLiteral("00"); // a new job has closed nothing yet
        joblst.append(job);
        emit rowsReset();
    } else {
        storage::PresetJob& entry = joblst[row];
        entry.job = job.job;
        entry.project = job.project;
        entry.budget = job.budget;
        entry.closed = core::fmt00(core::Val(EditField5.Text));
    }
    clearEditRow();
    ListIndex = row;
    if (row < 0)
        joblst_Change(-1);
    if (m_s.budgetNoticeReset)
        m_s.budgetNoticeReset();
    joblistupdate();
}

void preSetJobsWin::killjob_Action()
{
    if (ListIndex < 0 || ListIndex >= joblst.size())
        return;
    joblst.removeAt(ListIndex);
    ListIndex = -1;
    joblst_Change(-1);
    emit rowsReset();
    joblistupdate();
}

void preSetJobsWin::ExpImp_Action(const QString& command)
{
    if (command == kPSExportBtn) {
        exportList();
    } else if (command == kPSImportBtn) {
        readserverprst();
    } else if (command == kPSImport6Btn) {
        readlocal5prst();
        joblistupdate();
    } else if (command == kPSUpdateBudgets && m_s.updateBudgets) {
        m_s.updateBudgets();
        joblistupdate();
    }
}

void preSetJobsWin::show()
{
    visible = true;
    emit visibilityChanged();
}

void preSetJobsWin::Event_CancelClose()
{
    m_s.prefs.presetwinLeft = Left;
    m_s.prefs.presetwinTop = Top;
    m_s.prefs.presetwinHeight = Height;
    m_s.prefs.presetwinWidth = Width;
    joblst_Change(-1);
    // Closed with nothing chosen, the window comes back ready for a new job number, wherever the focus
    // was: typing into the list would pick a job by its first letter and change it.
    focus = Focus::EditField2;
    visible = false;
    emit visibilityChanged();
}

void preSetJobsWin::selectJob(const QString& job)
{
    for (int r = 0; r < joblst.size(); ++r) {
        if (core::sameText(joblst[r].job, job)) {
            joblst_Change(r);
            return;
        }
    }
}

} // namespace budgets
