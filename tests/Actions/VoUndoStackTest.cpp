#include <Actions/VoUndoStack.h>

#include <Actions/VoCommand.h>
#include <Threading/VoReceiver.h>

#include <LogCapture.h>
#include <VoTestSupport.h>

namespace {

// A document of letters, which fails once when it is told to: at the n-th step from now.
struct Document
{
    void step()
    {
        if (failIn > 0 && --failIn == 0)
            throw VoInvalidUseException("full");
    }

    std::string text;
    int failIn = 0;
};

class Type final : public VoCommand
{
public:
    Type(Document& document, char letter, bool merges)
        : VoCommand(VoString("Type ") + letter)
        , m_document(document)
        , m_letters(1, letter)
        , m_merges(merges)
    {
    }

    void execute() override
    {
        m_document.step();
        m_document.text += m_letters;
    }
    void undo() override
    {
        m_document.step();
        m_document.text.resize(m_document.text.size() - m_letters.size());
    }
    bool merge(const VoCommand& successor) override
    {
        const auto* const other = dynamic_cast<const Type*>(&successor);
        if (!m_merges || other == nullptr || !other->m_merges)
            return false;
        m_document.step();
        m_letters += other->m_letters;
        return true;
    }

private:
    Document& m_document;
    std::string m_letters;
    bool m_merges;
};

VoUniquePtr<VoCommand> Typed(Document& document, char letter, bool merges = false)
{
    return VoUniquePtr<VoCommand>(new Type(document, letter, merges));
}

// The history as a list of all states of the document, and which of their changes go together.
struct Model
{
    struct State
    {
        std::string text;
        bool isMergeable; // the change that led here can take the next one in
    };

    bool isClean() const { return clean == index; }

    void push(std::string text, bool merges)
    {
        const bool merged = merges && index > 0 && !isClean() && states[index].isMergeable;
        index += merged ? 0 : 1;
        if (clean && *clean >= index && !(merged && *clean < index))
            clean.reset();
        states.resize(index);
        states.push_back({std::move(text), merges});
        trim();
    }

    void trim()
    {
        while (limit != 0 && states.size() - 1 > limit) {
            if (index == 0) {
                states.pop_back();
                if (clean && *clean == states.size())
                    clean.reset();
            } else {
                states.erase(states.begin());
                --index;
                clean = clean && *clean > 0 ? std::optional(*clean - 1) : std::nullopt;
            }
        }
    }

    std::vector<State> states = {{"", false}};
    std::size_t index = 0;
    std::optional<std::size_t> clean = 0;
    std::size_t limit = 0;
};

class History : public testing::Test
{
protected:
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }
    char letter() { return static_cast<char>('a' + below(26)); }

    // Whether it was done; what fails on purpose must leave all as it was.
    template <typename Work>
    bool done(Work work)
    {
        const std::string before = document.text;
        const VoUndoStack::State stateBefore = stack.state();
        try {
            work();
            document.failIn = 0;
            return true;
        } catch (const VoInvalidUseException&) {
            EXPECT_EQ(document.text, before);
            EXPECT_TRUE(stack.state() == stateBefore);
            return false;
        }
    }

    // Gives whether anything was kept.
    bool pushMany(int depth)
    {
        bool kept = false;
        for (int count = below(4); count > 0; --count) {
            const bool isGroup = depth < 3 && below(3) == 0;
            if (!isGroup)
                stack.push(Typed(document, letter(), below(2) == 0));
            kept = (!isGroup || pushGroup(depth + 1)) || kept;
        }
        return kept;
    }

    // Now and then a group ends on purpose, and the one around it goes on.
    bool pushGroup(int depth)
    {
        const std::string before = document.text;
        VoUndoStack::Group group(stack, "group");
        const bool kept = pushMany(depth);
        if (below(5) != 0) {
            group.commit();
            return kept;
        }
        document.failIn = 0; // what is taken back must not fail
        group.cancel();
        EXPECT_EQ(document.text, before);
        return false;
    }

    void step()
    {
        document.failIn = below(4) == 0 ? 1 + below(4) : 0;
        const int kind = below(16);
        if (kind < 6) {
            const bool merges = below(2) == 0;
            if (done([&] { stack.push(Typed(document, letter(), merges)); }))
                model.push(document.text, merges);
        } else if (kind < 9 && model.index > 0) {
            if (done([&] { stack.undo(); }))
                --model.index;
        } else if (kind < 11 && model.index + 1 < model.states.size()) {
            if (done([&] { stack.redo(); }))
                ++model.index;
        } else if (kind < 14) {
            bool kept = false;
            if (done([&] { stack.group("group", [&] { kept = pushMany(0); }); }) && kept)
                model.push(document.text, false);
        } else if (kind == 14) {
            stack.setClean();
            model.clean = model.index;
        } else {
            model.limit = static_cast<std::size_t>(below(8));
            stack.setLimit(model.limit);
            model.trim();
        }
        document.failIn = 0;
    }

    Document document;
    VoUndoStack stack;
    Model model;
    std::mt19937 m_random{20261122};
};

TEST_F(History, RandomWalksAgreeWithAListOfAllStates)
{
    VoUndoStack::State heard;
    heard.isClean = true;
    const VoReceiver receiver = stack.connect([&](const VoUndoStack::State& state) {
        EXPECT_FALSE(state == heard);
        heard = state;
    });
    for (int i = 0; i < 20000 && !HasFailure(); ++i) {
        step();
        const VoUndoStack::State state = stack.state();
        ASSERT_EQ(document.text, model.states[model.index].text) << "step " << i;
        ASSERT_EQ(state.index, model.index) << "step " << i;
        ASSERT_EQ(state.size + 1, model.states.size()) << "step " << i;
        ASSERT_EQ(state.isClean, model.isClean()) << "step " << i;
        ASSERT_EQ(state.canRedo, state.index < state.size);
        ASSERT_TRUE(state == heard) << "step " << i;
    }
}

TEST_F(History, TellsWhatItCannotDo)
{
    EXPECT_THROW_MSG(stack.undo(), VoInvalidCallException, "Nothing to undo");
    EXPECT_THROW_MSG(stack.redo(), VoInvalidCallException, "Nothing to redo");
    EXPECT_THROW_MSG(stack.push(nullptr), VoNullPointerException, "VoUniquePtr dereferencing nullptr");
    EXPECT_THROW_MSG(stack.push("x", nullptr, [] {}), VoInvalidParameterException, "Invalid command function: x");
    EXPECT_THROW_MSG(stack.text(0), VoIndexOutOfBoundsException, "Index out of bounds [0,0]");
    auto outer = std::make_unique<VoUndoStack::Group>(stack, "outer");
    auto inner = std::make_unique<VoUndoStack::Group>(stack, "inner");
    stack.push(Typed(document, 'a'));
    for (const auto member : {&VoUndoStack::undo, &VoUndoStack::redo, &VoUndoStack::clear, &VoUndoStack::setClean})
        EXPECT_THROW_MSG((stack.*member)(), VoInvalidCallException, "Group is open");
    EXPECT_THROW_MSG(outer->commit(), VoInvalidCallException, "Group is open");
    outer.reset(); // and what is within
    EXPECT_EQ(document.text, "");
    EXPECT_THROW_MSG(inner->commit(), VoInvalidCallException, "Group is not open");
    const VoUndoStack::Group later(stack, "later");
    stack.push(Typed(document, 'b'));
    inner.reset(); // which must leave the later one alone
    EXPECT_EQ(document.text, "b");
}

TEST_F(History, IsNotChangedByItsOwnCommandsAndListeners)
{
    const vo::test::LogCapture log;
    const VoReceiver receiver = stack.connect([&](const VoUndoStack::State&) { stack.undo(); });
    EXPECT_THROW_MSG(stack.push(
                         "x", [&] { stack.clear(); }, [] {}),
                     VoInvalidCallException, "Undo stack is in use");
    stack.push(Typed(document, 'a'));
    EXPECT_EQ(document.text, "a");
    EXPECT_EQ(log.count(vo::logging::Level::Error, "actions", "Exception in listener: Undo stack is in use"), 1u);
}

TEST_F(History, IsEmptiedWhenTheWayBackFailsToo)
{
    const vo::test::LogCapture log;
    stack.push(Typed(document, 'a'));
    EXPECT_THROW_MSG(stack.group("g",
                                 [&] {
                                     stack.push(
                                         "x", [] {}, [] { throw VoInvalidUseException("stuck"); });
                                     throw VoInvalidCallException("first cause");
                                 }),
                     VoInvalidCallException, "first cause");
    EXPECT_EQ(stack.state().size, 0u);
    EXPECT_FALSE(stack.isClean());
    EXPECT_EQ(log.count(vo::logging::Level::Error, "actions", "Cannot take back \"x\", the history is emptied: stuck"),
              1u);
    EXPECT_NO_THROW(stack.push(Typed(document, 'b')));
    stack.setClean();
    stack.clear();
    EXPECT_TRUE(stack.state() == VoUndoStack().state() && stack.isClean());
}

TEST(VoUndoStack, MayEndBeforeItsGroups)
{
    Document document;
    auto stack = std::make_unique<VoUndoStack>();
    VoUndoStack::Group group(*stack, "g");
    stack->push(Typed(document, 'a'));
    stack.reset();
    EXPECT_THROW_MSG(group.commit(), VoInvalidCallException, "Group is not open");
    EXPECT_EQ(document.text, "a");
}

} // namespace
