#include <XML/VoXMLElementReader.h>

#include <Core/VoException.h>

#include <utility>

VoXMLElementReader::~VoXMLElementReader() = default;
VoXMLElementReader::Children::~Children() = default;

using Iterator = VoXMLElementReader::Children::Iterator;

Iterator::Implementation::~Implementation() = default;

Iterator::Iterator(std::shared_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation))
{
}

Iterator::Iterator(const Iterator& other) = default;
Iterator& Iterator::operator=(const Iterator& other) = default;
Iterator::~Iterator() = default;

std::shared_ptr<VoXMLElementReader> Iterator::operator*() const
{
    return m_implementation ? m_implementation->currentChild() : nullptr;
}

Iterator& Iterator::operator++()
{
    if (!m_implementation)
        throw VoInvalidUseException("No parent object in iterator");
    m_implementation->nextChild();
    return *this;
}

void Iterator::operator++(int)
{
    ++*this;
}

bool Iterator::operator==(const Iterator& other) const
{
    return **this == *other;
}

bool Iterator::operator!=(const Iterator& other) const
{
    return **this != *other;
}
