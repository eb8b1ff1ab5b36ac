#pragma once

#include <QtCore/QString>
#include <QtXml/QDomElement>

#include <map>
#include <optional>
#include <vector>

/// @file
/// Namespaces in a DOM tree. An element or attribute that was made in a namespace declares it by itself when the tree
/// is saved; one that was made by its bare name does not, and depends on the attributes "xmlns" and "xmlns:prefix"
/// around it.

namespace vo::detail {

/// True for "xmlns" and "xmlns:prefix".
bool IsNamespaceDeclaration(const QString& name);
/// The name of the attribute that declares a prefix, "xmlns" for the empty one.
QString DeclarationName(const QString& prefix);

/// The attributes of an element in order of their names: the map's own order is that of a hash with a random seed,
/// another one in each process.
std::vector<QDomNode> AttributesByName(const QDomElement& element);

/// What a prefix stands for within an element: empty for no namespace, nothing when the prefix is not declared.
std::optional<QString> NamespaceOf(const QDomElement& element, const QString& prefix);
/// A prefix that stands for a namespace within an element, if there is one; the empty one, which attributes cannot use,
/// only on request.
std::optional<QString> PrefixOf(const QDomElement& element, const QString& namespaceUri, bool allowsDefault);
/// Prefixes that attributes declare by themselves, and their namespaces.
using AttributePrefixes = std::map<QString, QString>;
/// A prefix that means nothing within an element nor among its attributes.
QString NewPrefix(const QDomElement& element, const AttributePrefixes& ofAttributes = {});

/// Makes elements for a parent, which may be null, as the stream writer would write them there.
/// @{
QDomElement MakeElement(QDomDocument document, const QDomElement& parent, const QString& qualifiedName);
QDomElement MakeElement(QDomDocument document, const QDomElement& parent, const QString& name,
                        const QString& namespaceUri);
/// @}

} // namespace vo::detail
