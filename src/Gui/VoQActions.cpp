#include <Gui/VoQActions.h>

#include <Actions/VoAction.h>
#include <Actions/VoUndoStack.h>
#include <Core/VoExceptionText.h>
#include <Gui/VoIcons.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoReceiver.h>

#include <QtGui/QKeySequence>
#include <QtWidgets/qaction.h> // the name that both versions of the framework have

#include <utility>

namespace {

// The framework takes one "&" for the mark of a mnemonic.
QString WithoutMnemonic(const VoString& text)
{
    return text.toQString().replace(QLatin1Char('&'), QLatin1String("&&"));
}

VoString PlainText(const QString& text)
{
    QString plain;
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('&'))
            ++i;
        if (i < text.size())
            plain += text[i];
    }
    return plain;
}

// Nothing may be thrown through the framework's signals.
template <typename Operation>
void Guarded(const VoQActions::Failure& failure, Operation operation) noexcept
{
    try {
        try {
            operation();
        } catch (...) {
            if (!failure)
                throw;
            failure(vo::CurrentExceptionText());
        }
    } catch (...) {
        vo::logging::Logger::Get("actions").error(vo::CurrentExceptionText());
    }
}

class ActionProxy : public QAction
{
public:
    ActionProxy(VoAction& action, QObject* parent, VoQActions::Failure failure)
        : QAction(parent)
        , m_action(action)
        , m_failure(std::move(failure))
        , m_receiver(action.connect([this](VoAction::Property) { show(); }))
    {
        show();
        QObject::connect(this, &QAction::changed, this, [this] { takeChanges(); });
        QObject::connect(this, &QAction::triggered, this, [this] { trigger(); });
        QObject::connect(
            this, &QAction::toggled, this, [this] { takeCheck(); }, Qt::QueuedConnection);
    }

private:
    bool isAlive()
    {
        if (!m_receiver.isReceiving())
            setEnabled(false);
        return m_receiver.isReceiving();
    }

    void show()
    {
        m_isShowing = true;
        if (!PlainText(text()).equal(m_action.text(), VoString::CaseSensitive)) // a mnemonic stays
            setText(WithoutMnemonic(m_action.text()));
        setToolTip(m_action.description().isEmpty() ? m_action.text().toQString() : m_action.description().toQString());
        setStatusTip(m_action.description().toQString());
        setShortcut(QKeySequence(m_action.shortcut().toQString(), QKeySequence::PortableText));
        setEnabled(m_action.isEnabled());
        setCheckable(m_action.isCheckable());
        setChecked(m_action.isChecked());
        if (!m_iconName.equal(m_action.iconName(), VoString::CaseSensitive)) {
            m_iconName = m_action.iconName();
            setIcon(m_iconName.isEmpty() ? QIcon() : VoIcons::Icon(m_iconName));
        }
        m_isShowing = false;
    }

    void takeChanges()
    {
        if (m_isShowing || !m_receiver.isReceiving())
            return;
        Guarded(m_failure, [this] {
            // Each is read before it is set: what is told of one change shows all others as they were.
            const VoString text = PlainText(this->text());
            const VoString shortcut = this->shortcut().toString(QKeySequence::PortableText);
            const bool enabled = isEnabled();
            m_action.setText(text);
            m_action.setShortcut(shortcut);
            m_action.setEnabled(enabled);
        });
    }

    // Not at once: while it is triggered, the framework's action is checked before the other one is asked.
    void takeCheck()
    {
        if (m_receiver.isReceiving())
            Guarded(m_failure, [this] { m_action.setChecked(isChecked()); });
    }

    void trigger()
    {
        if (!isAlive())
            return;
        Guarded(m_failure, [this] { m_action.trigger(); });
        if (m_receiver.isReceiving())
            show(); // also what did not change: the framework has checked this one by itself
    }

    VoAction& m_action;
    VoQActions::Failure m_failure;
    VoString m_iconName;
    bool m_isShowing = false;
    VoReceiver m_receiver;
};

// One direction of a history.
struct Direction
{
    const char* icon;
    QKeySequence::StandardKey key;
    bool VoUndoStack::State::*isPossible;
    VoString VoUndoStack::State::*text;
    void (VoUndoStack::*step)();
};

class StepAction : public QAction
{
public:
    StepAction(VoUndoStack& history, QObject* parent, const VoString& prefix, const Direction& direction,
               VoQActions::Failure failure)
        : QAction(parent)
        , m_prefix(prefix)
        , m_direction(direction)
        , m_receiver(history.connect([this](const VoUndoStack::State& state) { show(state); }))
    {
        setIcon(VoIcons::Icon(direction.icon));
        setShortcut(direction.key);
        show(history.state());
        QObject::connect(this, &QAction::triggered, this, [this, &history, failure = std::move(failure)] {
            if (m_receiver.isReceiving())
                Guarded(failure, [&history, step = m_direction.step] { (history.*step)(); });
            else
                setEnabled(false);
        });
    }

private:
    void show(const VoUndoStack::State& state)
    {
        const VoString& what = state.*m_direction.text;
        setText(WithoutMnemonic(what.isEmpty() ? m_prefix : m_prefix + " " + what));
        setEnabled(state.*m_direction.isPossible);
    }

    VoString m_prefix;
    Direction m_direction;
    VoReceiver m_receiver;
};

} // namespace

QAction* VoQActions::Make(VoAction& action, QObject* parent, Failure failure)
{
    return new ActionProxy(action, parent, std::move(failure));
}

QAction* VoQActions::MakeUndo(VoUndoStack& history, QObject* parent, const VoString& prefix, Failure failure)
{
    const Direction undo = {"edit-undo", QKeySequence::Undo, &VoUndoStack::State::canUndo,
                            &VoUndoStack::State::undoText, &VoUndoStack::undo};
    return new StepAction(history, parent, prefix, undo, std::move(failure));
}

QAction* VoQActions::MakeRedo(VoUndoStack& history, QObject* parent, const VoString& prefix, Failure failure)
{
    const Direction redo = {"edit-redo", QKeySequence::Redo, &VoUndoStack::State::canRedo,
                            &VoUndoStack::State::redoText, &VoUndoStack::redo};
    return new StepAction(history, parent, prefix, redo, std::move(failure));
}
