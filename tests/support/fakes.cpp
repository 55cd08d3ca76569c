#include "fakes.h"

namespace testing
{

std::unique_ptr<platform::Timer> FakeTimers::create(int periodMs)
{
    auto timer = std::make_unique<FakeTimer>(periodMs);
    made.push_back(timer.get());
    return timer;
}

platform::Answer ScriptedDialogs::ask(const platform::Question& question)
{
    questions << question;
    if (whileAsking)
        whileAsking();
    if (m_answers.empty()) {
        errors << QStringLiteral("unexpected question: ") + question.message;
        return platform::Answer::Cancel;
    }
    const auto answer = m_answers.front();
    m_answers.pop_front();
    return answer;
}

void ScriptedDialogs::showModal(platform::ModalForm& form)
{
    modalsShown << form.formName();
    if (m_modals.empty() || m_modals.front().first != form.formName()) {
        errors << QStringLiteral("unexpected window: ") + form.formName();
        return;
    }
    auto handler = std::move(m_modals.front().second);
    m_modals.pop_front();
    handler(form);
}

QString ScriptedDialogs::nextFile(const QString& title)
{
    if (m_files.empty()) {
        errors << QStringLiteral("unexpected file dialog: ") + title;
        return {};
    }
    const QString path = m_files.front();
    m_files.pop_front();
    return path;
}

} // namespace testing
