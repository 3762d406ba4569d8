#pragma once

#include <QStringView>

// True when `name` reads as a reverse-domain identifier such as "org.mozilla.firefox": at least three
// dot-separated parts, each a letter or underscore followed by letters, digits, underscores or hyphens
// (the rule Flatpak and D-Bus apply to app ids), the first part a top-level domain (any two-letter
// country code or a common generic one). File names such as "cache.tar.gz" therefore do not read as one.
bool isReverseDomainName(QStringView name);

// The domain such an identifier names: "org.mozilla.firefox" → "mozilla.org".
QString identifierDomain(QStringView identifier);
