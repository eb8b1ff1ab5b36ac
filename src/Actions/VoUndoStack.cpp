#include <Actions/VoUndoStack.h>

#include <Actions/VoCommand.h>
#include <Core/VoException.h>
#include <Threading/VoBroadcaster.h>
#include <Threading/detail/Guarded.h>

#include <algorithm>
#include <deque>
#include <optional>
#include <utility>

namespace {

using Commands = std::deque<std::unique_ptr<VoCommand>>;

void Require(bool isPossible, const char* message)
{
    if (!isPossible)
        throw VoInvalidCallException(message);
}

// Sets a flag that something is going on, for as long as it lives.
class Use
{
public:
    explicit Use(bool& flag)
        : m_flag(flag)
    {
        Require(!flag, "Undo stack is in use");
        flag = true;
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { m_flag = false; }

private:
    bool& m_flag;
};

} // namespace

class VoUndoStack::Private
{
public:
    struct OpenGroup
    {
        std::size_t number;
        VoString text;
        Commands commands;
    };
    class WholeGroup;
    using Step = void (VoCommand::*)();

    template <typename Work>
    void change(Work work);
    void requireNoGroup() const { Require(open.empty(), "Group is open"); }

    void carryOut(std::unique_ptr<VoCommand> command);
    void back(VoCommand& command, Step step) noexcept;
    void openGroup(std::size_t number, VoString text) { open.push_back({number, std::move(text), {}}); }
    bool isOpen(std::size_t number) const;
    void commit(std::size_t number);
    void cancel(std::size_t number);
    void trim();
    State state() const;

    Commands history; // but for what open groups hold
    std::size_t index = 0;
    std::optional<std::size_t> clean = 0; // the index at which the document is clean
    std::size_t limit = 0;
    std::deque<OpenGroup> open; // the outermost first
    std::size_t groups = 0;     // that were ever opened
    bool isInUse = false;
    bool isLost = false; // the document is in a state that nobody knows
    State told;
    VoBroadcaster<const State&> changes;

private:
    std::size_t end(const Commands& commands) const { return &commands == &history ? index : commands.size(); }
    Commands& receiving() { return open.empty() ? history : open.back().commands; }
    VoCommand* merging(const Commands& commands, std::size_t end) const;
    void keep(Commands& commands, std::size_t end, std::unique_ptr<VoCommand> command) noexcept;
    void settle();
};

// A committed group. All that it holds is done, or nothing.
class VoUndoStack::Private::WholeGroup final : public VoCommand
{
public:
    WholeGroup(Private& stack, VoString text)
        : VoCommand(std::move(text))
        , m_stack(stack)
    {
    }

    void execute() override { redo(); }
    void redo() override { walk(commands.begin(), commands.end(), &VoCommand::redo, &VoCommand::undo); }
    void undo() override { walk(commands.rbegin(), commands.rend(), &VoCommand::undo, &VoCommand::redo); }

    Commands commands;

private:
    template <typename Iterator>
    void walk(Iterator first, Iterator last, Step forth, Step back)
    {
        Iterator next = first;
        try {
            for (; next != last; ++next)
                ((**next).*forth)();
        } catch (...) {
            while (next != first && !m_stack.isLost)
                m_stack.back(**--next, back);
            throw;
        }
    }

    Private& m_stack;
};

// Runs what changes the history, and tells what has become of it, also when that fails.
template <typename Work>
void VoUndoStack::Private::change(Work work)
{
    const Use use(isInUse);
    try {
        work();
    } catch (...) {
        settle();
        throw;
    }
    settle();
}

void VoUndoStack::Private::settle()
{
    if (std::exchange(isLost, false)) {
        history.clear();
        open.clear();
        index = 0;
        clean.reset();
    }
    State now = state();
    if (now == told)
        return;
    told = std::move(now);
    changes.broadcast(told);
}

// A step on the way back from a failure.
void VoUndoStack::Private::back(VoCommand& command, Step step) noexcept
{
    try {
        (command.*step)();
    } catch (...) {
        vo::logging::Logger::Get("actions").error("Cannot take back \"" + command.text() +
                                                  "\", the history is emptied: " + vo::CurrentExceptionText());
        isLost = true;
    }
}

void VoUndoStack::Private::carryOut(std::unique_ptr<VoCommand> command)
{
    Commands& commands = receiving();
    const std::size_t last = end(commands);
    commands.emplace_back(); // so that nothing is left that could fail once the command has been carried out
    bool isExecuted = false;
    try {
        command->execute();
        isExecuted = true;
        VoCommand* const before = merging(commands, last);
        if (before != nullptr && before->merge(*command))
            command.reset();
    } catch (...) {
        if (isExecuted)
            back(*command, &VoCommand::undo);
        commands.pop_back();
        throw;
    }
    keep(commands, last, std::move(command));
}

VoCommand* VoUndoStack::Private::merging(const Commands& commands, std::size_t end) const
{
    const bool isAtMark = &commands == &history && clean == index;
    return end == 0 || isAtMark ? nullptr : commands[end - 1].get();
}

// Puts a command, or none when it was merged, where there is room for it; what had been taken back goes.
void VoUndoStack::Private::keep(Commands& commands, std::size_t end, std::unique_ptr<VoCommand> command) noexcept
{
    const std::size_t size = end + (command ? 1 : 0);
    if (command)
        commands[end] = std::move(command);
    commands.erase(commands.begin() + static_cast<std::ptrdiff_t>(size), commands.end());
    if (&commands != &history)
        return;
    if (clean && *clean > index)
        clean.reset();
    index = size;
    trim();
}

void VoUndoStack::Private::trim()
{
    while (limit != 0 && history.size() > limit) {
        if (index == 0) {
            history.pop_back();
            if (clean && *clean > history.size())
                clean.reset();
            continue;
        }
        history.pop_front();
        --index;
        clean = clean && *clean > 0 ? std::optional(*clean - 1) : std::nullopt;
    }
}

bool VoUndoStack::Private::isOpen(std::size_t number) const
{
    return std::any_of(open.begin(), open.end(), [=](const OpenGroup& group) { return group.number == number; });
}

void VoUndoStack::Private::commit(std::size_t number)
{
    Require(isOpen(number), "Group is not open");
    Require(open.back().number == number, "Group is open");
    OpenGroup& group = open.back();
    if (group.commands.empty())
        return open.pop_back();
    auto whole = std::make_unique<WholeGroup>(*this, group.text);
    Commands& commands = open.size() == 1 ? history : open[open.size() - 2].commands;
    const std::size_t last = end(commands);
    commands.emplace_back();
    whole->commands.swap(group.commands);
    open.pop_back();
    keep(commands, last, std::move(whole));
}

void VoUndoStack::Private::cancel(std::size_t number)
{
    while (isOpen(number) && !isLost) {
        Commands& commands = open.back().commands;
        for (; !commands.empty() && !isLost; commands.pop_back())
            back(*commands.back(), &VoCommand::undo);
        open.pop_back();
    }
}

VoUndoStack::State VoUndoStack::Private::state() const
{
    State state;
    state.index = index;
    state.size = history.size();
    state.isClean = clean == index && std::all_of(open.begin(), open.end(),
                                                  [](const OpenGroup& group) { return group.commands.empty(); });
    state.canUndo = open.empty() && index > 0;
    state.canRedo = open.empty() && index < history.size();
    if (state.canUndo)
        state.undoText = history[index - 1]->text();
    if (state.canRedo)
        state.redoText = history[index]->text();
    return state;
}

bool VoUndoStack::State::operator==(const State& other) const
{
    return canUndo == other.canUndo && canRedo == other.canRedo && isClean == other.isClean && index == other.index &&
           size == other.size && undoText.equal(other.undoText, VoString::CaseSensitive) &&
           redoText.equal(other.redoText, VoString::CaseSensitive);
}

VoUndoStack::VoUndoStack(std::size_t limit)
    : m_private(std::make_shared<Private>())
{
    m_private->limit = limit;
    m_private->told = m_private->state();
}

VoUndoStack::~VoUndoStack() = default;

void VoUndoStack::push(VoUniquePtr<VoCommand> command)
{
    static_cast<void>(*command); // refuses none
    m_private->change([&] { m_private->carryOut(std::unique_ptr<VoCommand>(command.release())); });
}

void VoUndoStack::push(VoString text, std::function<void()> execute, std::function<void()> undo)
{
    push(VoUniquePtr<VoCommand>(new VoFunctionCommand(std::move(text), std::move(execute), std::move(undo))));
}

void VoUndoStack::undo()
{
    m_private->change([&p = *m_private] {
        p.requireNoGroup();
        Require(p.index > 0, "Nothing to undo");
        p.history[p.index - 1]->undo();
        --p.index;
    });
}

void VoUndoStack::redo()
{
    m_private->change([&p = *m_private] {
        p.requireNoGroup();
        Require(p.index < p.history.size(), "Nothing to redo");
        p.history[p.index]->redo();
        ++p.index;
    });
}

void VoUndoStack::group(const VoString& text, const std::function<void()>& body)
{
    Group group(*this, text);
    body();
    group.commit();
}

void VoUndoStack::clear()
{
    m_private->change([&p = *m_private] {
        p.requireNoGroup();
        p.clean = p.clean == p.index ? std::optional<std::size_t>(0) : std::nullopt;
        p.history.clear();
        p.index = 0;
    });
}

void VoUndoStack::setClean()
{
    m_private->change([&p = *m_private] {
        p.requireNoGroup();
        p.clean = p.index;
    });
}

void VoUndoStack::resetClean()
{
    m_private->change([&p = *m_private] { p.clean.reset(); });
}

bool VoUndoStack::isClean() const
{
    return m_private->state().isClean;
}

VoUndoStack::State VoUndoStack::state() const
{
    return m_private->state();
}

std::size_t VoUndoStack::limit() const
{
    return m_private->limit;
}

void VoUndoStack::setLimit(std::size_t limit)
{
    m_private->change([&p = *m_private, limit] {
        p.requireNoGroup();
        p.limit = limit;
        p.trim();
    });
}

const VoString& VoUndoStack::text(std::size_t index) const
{
    if (index >= m_private->history.size())
        throw VoIndexOutOfBoundsException(index, m_private->history.size());
    return m_private->history[index]->text();
}

VoReceiver VoUndoStack::connect(std::function<void(const State&)> callback)
{
    return m_private->changes.connect(vo::detail::Guarded<const State&>("actions", std::move(callback)));
}

VoUndoStack::Group::Group(VoUndoStack& stack, VoString text)
    : m_stack(stack.m_private)
    , m_number(++stack.m_private->groups)
{
    stack.m_private->change([&] { stack.m_private->openGroup(m_number, std::move(text)); });
}

VoUndoStack::Group::~Group()
{
    try {
        cancel();
    } catch (...) {
        vo::logging::Logger::Get("actions").error("Cannot cancel group: " + vo::CurrentExceptionText());
    }
}

void VoUndoStack::Group::commit()
{
    const std::shared_ptr<Private> stack = m_stack.lock();
    Require(stack != nullptr, "Group is not open");
    stack->change([&] { stack->commit(m_number); });
    m_stack.reset();
}

void VoUndoStack::Group::cancel()
{
    if (const std::shared_ptr<Private> stack = m_stack.lock())
        stack->change([&] { stack->cancel(m_number); });
}
