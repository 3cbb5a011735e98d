// Whom a certificate is for, and why one is not accepted, in words. RFC 5922 says which names count. Any thread.
#pragma once

#include <string>
#include <vector>

struct x509_st;
struct x509_store_ctx_st;

namespace telephone::sip {

// The domains and IP addresses that the certificate is for: the hosts of its SIP URIs, its DNS names and its addresses.
// Only a certificate without any alternative name is for its common name.
std::vector<std::string> namesOf(x509_st const& certificate);

// Whether the certificate is for the host: a domain, as it was before it was resolved, or an IP address. Without regard
// to case, and without wildcards (RFC 5922 section 7.2).
bool isFor(x509_st const& certificate, std::string const& host);

// "the certificate of pbx.example is for other.example".
std::string wrongNameText(std::string const& host, x509_st const& certificate);

// Why the check of the host's certificate failed: "the certificate of pbx.example expired on 2026-01-31".
std::string verificationText(std::string const& host, x509_store_ctx_st& verification);

}  // namespace telephone::sip
