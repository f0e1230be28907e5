#pragma once

#include <QtCore/QString>
#include <QtCore/QUrl>

/// Makes a valid URL of the text that the libraries above compose by plain concatenation.
///
/// They put identifiers and filters into the text as they are, so text and structure are told apart here:
/// - The address ends at the first '/' or '?' after "://"; the path at the first '?'. An identifier that
/// holds
///   '?' or '/' can therefore not be told from structure; its rest is sent as query or as further segments.
/// - In the query, '&' separates parameters and the first '=' ends a parameter's name, except inside a string
///   literal of a JSON value. A JSON value is one that begins with '{' or '[' and closes what it opens;
///   quotes and braces in other values are plain text.
/// - '%' followed by two hex digits is taken as encoded already, except inside such a string literal, where
/// it
///   is text. Any other '%' is text.
/// - Everything else that is not a letter, a digit or harmless punctuation is percent-encoded as UTF-8: '#'
/// never
///   begins a fragment and '+' never becomes a space.
/// - The segments "." and ".." are sent as they stand: no encoding could protect them, since "%2E" means the
///   same. It is the service that decides what they are.
namespace KvUrlText {

/// The URL to request for @p text. Linear in the length of the text.
QUrl finished(const QString& text);

/// Scheme, host and port, "http://127.0.0.1:8080", without user name and password: fit for a message.
QString origin(const QUrl& url);

/// Whether scheme, host and port are equal, the port being the scheme's own where none is given.
bool isSameOrigin(const QUrl& a, const QUrl& b);

} // namespace KvUrlText
