#pragma once

#include <array>
#include <string>

#include <QUrl>

// Where updates come from. Fixed: nothing in the program points it elsewhere.
namespace velicor::UpdateConfig {

const QUrl& feed();  // the document that names the newest release
const QUrl& page();  // the product's home page

// The hosts that a release may be downloaded from: the site, with and without "www".
const std::array<std::string, 2>& allowedHosts();

// Whether a connection to this URL is encrypted and goes to an allowed host. For addresses that the network
// library has made itself; what a feed says is judged by Release::isTrusted().
bool reachesOurSite(const QUrl& url);

}  // namespace velicor::UpdateConfig
