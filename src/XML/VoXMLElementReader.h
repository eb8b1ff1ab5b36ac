#pragma once

#include <Core/VoString.h>
#include <XML/VoXMLAttributeSet.h>

#include <cstddef>
#include <iterator>
#include <memory>

/// Reads one element of an XML document: name, attributes, text and child elements.
///
/// Code that reads XML takes this interface, so that it can read from a stream (VoXMLStreamElementReader) as well as
/// from a DOM tree (VoXMLDomElementReader). A stream goes forwards only: name and attributes stay readable, text and
/// children only while the element is open. Names are local names, without a namespace prefix.
class VOCORE_EXPORT VoXMLElementReader
{
public:
    /// The child elements, for one walk in document order: `for (auto child : element.children())`.
    class VOCORE_EXPORT Children
    {
    public:
        /// Input iterator over the child elements. Two iterators are equal when their current children are.
        class VOCORE_EXPORT Iterator
        {
        public:
            /// Where an iterator gets its elements from; copies of an iterator share it.
            class VOCORE_EXPORT Implementation
            {
            public:
                virtual ~Implementation(); ///< Implementations are deleted through this base.
                /// The child reached, null behind the last one.
                virtual std::shared_ptr<VoXMLElementReader> currentChild() = 0;
                /// Goes on to the next child and returns it, null behind the last one; from there it throws
                /// VoInvalidXMLOperation "NextChild on closed element called".
                virtual std::shared_ptr<VoXMLElementReader> nextChild() = 0;
            };

            /// @name What standard algorithms ask of an iterator
            /// @{
            using iterator_category = std::input_iterator_tag;      ///< Goes forward, once.
            using value_type = std::shared_ptr<VoXMLElementReader>; ///< A child.
            using difference_type = std::ptrdiff_t;                 ///< Not used.
            using pointer = const value_type*;                      ///< Not used.
            using reference = value_type;                           ///< Children are handed out as they are.
            /// @}

            explicit Iterator(std::shared_ptr<Implementation> implementation); ///< Null makes an end iterator.
            Iterator(const Iterator& other);                                   ///< Shares the position.
            Iterator& operator=(const Iterator& other);                        ///< Shares the position.
            ~Iterator();                                                       ///< Nothing but memory to release.

            std::shared_ptr<VoXMLElementReader> operator*() const; ///< The current child; null at the end.
            /// Goes on to the next child. Behind the last one it throws VoInvalidXMLOperation "NextChild on closed
            /// element called"; VoInvalidUseException "No parent object in iterator" when the range has gone, and for
            /// what end() gives.
            Iterator& operator++();
            void operator++(int); ///< The same.

            bool operator==(const Iterator& other) const; ///< Same current child; both at the end.
            bool operator!=(const Iterator& other) const; ///< Other current children.

        private:
            std::shared_ptr<Implementation> m_implementation;
        };

        virtual ~Children(); ///< The element reader owns its range.

        /// Fetches the first child. The range can be walked once only: a second call throws VoInvalidUseException
        /// "Begin called multiple times on a single use iterator".
        virtual Iterator begin() = 0;
        virtual Iterator end() = 0; ///< Behind the last child; may be asked for any number of times.
    };

    virtual ~VoXMLElementReader(); ///< Readers are deleted through this base.

    virtual const VoXMLAttributeSet& attributes() const = 0;   ///< All attributes, in document order.
    virtual Children& children() = 0;                          ///< The child elements; owned by this reader.
    virtual bool hasAttribute(const VoString& name) const = 0; ///< True with an attribute of that name.
    virtual const VoString& name() const = 0;                  ///< The element's local name.
    /// The value of an attribute.
    /// @throws VoUnknownXMLAttributeException when there is none of that name
    virtual VoString readAttribute(const VoString& name) = 0;
    /// The double whose Base64 text an attribute holds.
    /// @throws VoUnknownXMLAttributeException when there is none of that name
    /// @throws VoInvalidParameterException "Invalid string length" when its text is no Base64 text
    virtual double readAttributeBase64(const VoString& name) const = 0;
    /// The first run of text that lies directly in the element, without leading and trailing white space.
    virtual VoString readText() = 0;
    /// The double whose Base64 text the element holds.
    /// @throws VoInvalidParameterException "Invalid string length" when its text is no Base64 text
    virtual double readTextBase64() const = 0;

protected:
    /// @name Only whole readers are made, copied and assigned
    /// @{
    VoXMLElementReader() = default;                                     ///< For derived classes.
    VoXMLElementReader(const VoXMLElementReader&) = default;            ///< For derived classes.
    VoXMLElementReader& operator=(const VoXMLElementReader&) = default; ///< For derived classes.
    /// @}
};
