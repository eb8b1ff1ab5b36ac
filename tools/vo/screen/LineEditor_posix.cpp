#include <vo/screen/LineEditor.h>

#include <Threading/VoReceiver.h>

#include <QtCore/QString>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <histedit.h>
#include <poll.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace vo::tool {
namespace {

constexpr int MostRemembered = 1000;
constexpr std::size_t MostShown = 200; // candidates

std::wstring Wide(const VoString& text)
{
    return text.toQString().toStdWString();
}

VoString Narrow(const wchar_t* begin, const wchar_t* end)
{
    return VoString(QString::fromWCharArray(begin, static_cast<int>(end - begin)));
}

// The bytes of UTF-8 that follow a first one; -1 where that begins no character.
int Following(unsigned char first)
{
    if (first < 0x80)
        return 0;
    if (first >= 0xc2 && first < 0xe0)
        return 1;
    if (first >= 0xe0 && first < 0xf0)
        return 2;
    return first >= 0xf0 && first < 0xf5 ? 3 : -1;
}

void WriteOut(const VoString& text)
{
    [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, text.c_str(), text.size());
}

VoString CommonBeginning(const VoDeque<VoString>& words)
{
    QString common = words.front().toQString();
    for (const VoString& word : words) {
        const QString other = word.toQString();
        int same = 0;
        while (same < std::min(common.size(), other.size()) && common[same].toLower() == other[same].toLower())
            ++same;
        common.truncate(same);
    }
    return VoString(common);
}

} // namespace

struct LineEditor::Private
{
    Completer completer;
    VoStopFlag ended;
    EditLine* editor = nullptr;
    HistoryW* history = nullptr;
    int wake[2] = {-1, -1}; // a byte in it ends the wait for a key
    VoReceiver onEnd;
    std::wstring prompt;
    bool isGivenUp = false;

    static Private& Of(EditLine* editor)
    {
        void* data = nullptr;
        el_wget(editor, EL_CLIENTDATA, &data);
        return *static_cast<Private*>(data);
    }

    static wchar_t* Prompt(EditLine* editor) { return Of(editor).prompt.data(); }
    static int ReadKey(EditLine* editor, wchar_t* key) { return Of(editor).readKey(*key); }
    static unsigned char GiveUp(EditLine* editor, wint_t) { return Of(editor).giveUp(); }
    static unsigned char Complete(EditLine* editor, wint_t) { return Of(editor).complete(); }

    bool readByte(unsigned char& byte);
    int readKey(wchar_t& key);
    unsigned char giveUp();
    unsigned char complete();
    void replace(std::size_t length, const VoString& word);
    void show(const VoDeque<VoString>& words);
};

// False at the end of what is typed, and when the program is asked to end.
bool LineEditor::Private::readByte(unsigned char& byte)
{
    for (;;) {
        pollfd sources[] = {{STDIN_FILENO, POLLIN, 0}, {wake[0], POLLIN, 0}};
        if (poll(sources, std::size(sources), -1) < 0 && errno != EINTR)
            return false;
        if (ended.isStopped())
            return false;
        if ((sources[0].revents & (POLLIN | POLLHUP | POLLERR)) == 0)
            continue;
        const auto count = ::read(STDIN_FILENO, &byte, 1);
        if (count >= 0 || (errno != EINTR && errno != EAGAIN))
            return count == 1;
    }
}

int LineEditor::Private::readKey(wchar_t& key)
{
    unsigned char byte = 0;
    if (!readByte(byte))
        return 0;
    const int more = Following(byte);
    if (more < 0) {
        key = L'?';
        return 1;
    }
    key = more == 0 ? byte : byte & (0x3f >> more);
    for (int i = 0; i < more; ++i) {
        if (!readByte(byte))
            return 0;
        key = static_cast<wchar_t>((key << 6) | (byte & 0x3f));
    }
    return 1;
}

unsigned char LineEditor::Private::giveUp()
{
    isGivenUp = true;
    WriteOut("^C\n");
    return CC_NEWLINE;
}

unsigned char LineEditor::Private::complete()
{
    const LineInfoW* const line = el_wline(editor);
    const VoString typed = Narrow(line->buffer, line->cursor);
    const Candidates found = completer(typed);
    if (found.words.isEmpty())
        return CC_ERROR;
    const VoString word(typed.toStdString().substr(std::min(found.start, typed.size())));
    const VoString common = CommonBeginning(found.words);
    if (found.words.size() == 1) {
        const char last = common.isEmpty() ? ' ' : common[common.size() - 1];
        replace(Wide(word).size(), last == '=' || last == '/' ? common : common + " ");
        return CC_REFRESH;
    }
    if (common.size() > word.size()) {
        replace(Wide(word).size(), common);
        return CC_REFRESH;
    }
    show(found.words);
    return CC_REDISPLAY;
}

void LineEditor::Private::replace(std::size_t length, const VoString& word)
{
    if (length > 0)
        el_deletestr(editor, static_cast<int>(length));
    el_winsertstr(editor, Wide(word).c_str());
}

void LineEditor::Private::show(const VoDeque<VoString>& words)
{
    VoString text = "\n";
    for (std::size_t i = 0; i < std::min(words.size(), MostShown); ++i)
        text += words.at(i) + "  ";
    text += words.size() > MostShown ? "...\n" : "\n";
    WriteOut(text);
}

LineEditor::LineEditor(Completer completer, const VoStopFlag& ended)
    : m_private(std::make_unique<Private>())
{
    Private& p = *m_private;
    p.completer = std::move(completer);
    p.ended = ended;
    if (pipe(p.wake) == 0) {
        for (const int end : p.wake)
            fcntl(end, F_SETFD, FD_CLOEXEC);
        p.onEnd = ended.onStop([end = p.wake[1]] { [[maybe_unused]] const auto written = ::write(end, "", 1); });
    }
    p.editor = el_init("vo", stdin, stdout, stderr);
    p.history = history_winit();
    HistEventW event;
    history_w(p.history, &event, H_SETSIZE, MostRemembered);
    history_w(p.history, &event, H_SETUNIQUE, 1);
    el_wset(p.editor, EL_CLIENTDATA, &p);
    el_wset(p.editor, EL_PROMPT, &Private::Prompt);
    el_wset(p.editor, EL_EDITOR, L"emacs");
    el_wset(p.editor, EL_HIST, history_w, p.history);
    el_wset(p.editor, EL_GETCFN, &Private::ReadKey);
    // While a line is typed Ctrl-C is a key; while a function runs the terminal is as usual, and it is a signal.
    el_wset(p.editor, EL_SETTY, L"-d", L"-isig", nullptr);
    el_wset(p.editor, EL_ADDFN, L"give-up", L"Gives the line up", &Private::GiveUp);
    el_wset(p.editor, EL_BIND, L"^C", L"give-up", nullptr);
    el_wset(p.editor, EL_ADDFN, L"complete", L"Completes a word", &Private::Complete);
    el_wset(p.editor, EL_BIND, L"^I", L"complete", nullptr);
}

LineEditor::~LineEditor()
{
    m_private->onEnd = VoReceiver();
    el_end(m_private->editor);
    history_wend(m_private->history);
    for (const int end : m_private->wake) {
        if (end >= 0)
            close(end);
    }
}

std::optional<VoString> LineEditor::read(const VoString& prompt)
{
    m_private->prompt = Wide(prompt);
    m_private->isGivenUp = false;
    int length = 0;
    el_wset(m_private->editor, EL_PREP_TERM, 1); // before the prompt invites to type
    const wchar_t* const line = el_wgets(m_private->editor, &length);
    if (m_private->isGivenUp)
        return VoString();
    if (line == nullptr || length <= 0 || m_private->ended.isStopped())
        return std::nullopt;
    std::wstring text(line, static_cast<std::size_t>(length));
    text.erase(text.find_last_not_of(L"\r\n") + 1);
    return Narrow(text.data(), text.data() + text.size());
}

void LineEditor::remember(const VoString& line)
{
    HistEventW event;
    history_w(m_private->history, &event, H_ENTER, Wide(line).c_str());
}

} // namespace vo::tool
