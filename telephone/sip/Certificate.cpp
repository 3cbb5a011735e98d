#include "telephone/sip/Certificate.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>
#include <string_view>

#include <arpa/inet.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include "telephone/sip/Uri.h"

namespace telephone::sip {

namespace {

struct FreeNames
{
    void operator()(GENERAL_NAMES* names) const { GENERAL_NAMES_free(names); }
};

std::string textOf(ASN1_STRING const& text)
{
    return {reinterpret_cast<char const*>(ASN1_STRING_get0_data(&text)),
            static_cast<std::size_t>(ASN1_STRING_length(&text))};
}

std::string addressOf(ASN1_STRING const& bytes)
{
    std::array<char, INET6_ADDRSTRLEN> text{};
    int const family = ASN1_STRING_length(&bytes) == 4 ? AF_INET : AF_INET6;
    bool const isAddress = family == AF_INET || ASN1_STRING_length(&bytes) == 16;
    char const* const written =
        isAddress ? inet_ntop(family, ASN1_STRING_get0_data(&bytes), text.data(), text.size()) : nullptr;
    return written == nullptr ? std::string() : written;
}

// Empty for a name of another kind. A SIP URI with a user names that user and not the domain (RFC 5922 section 7.1).
std::string hostOf(GENERAL_NAME const& name)
{
    switch (name.type) {
    case GEN_DNS:
        return textOf(*name.d.dNSName);
    case GEN_IPADD:
        return addressOf(*name.d.iPAddress);
    case GEN_URI: {
        auto const uri = Uri::parse(textOf(*name.d.uniformResourceIdentifier));
        return uri && uri->scheme == "sip" && uri->user.empty() ? uri->host : std::string();
    }
    default:
        return {};
    }
}

std::string commonName(X509_NAME const& name)
{
    int const place = X509_NAME_get_index_by_NID(&name, NID_commonName, -1);
    return place < 0 ? std::string() : textOf(*X509_NAME_ENTRY_get_data(X509_NAME_get_entry(&name, place)));
}

// An IP address in its usual form; any other host unchanged.
std::string normalised(std::string const& host)
{
    std::array<unsigned char, sizeof(in6_addr)> bytes{};
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (inet_pton(AF_INET6, host.c_str(), bytes.data()) != 1) {
        return host;
    }
    return inet_ntop(AF_INET6, bytes.data(), text.data(), text.size());
}

std::string dayOf(ASN1_TIME const& time)
{
    std::tm parts{};
    std::array<char, 32> text{};
    if (ASN1_TIME_to_tm(&time, &parts) != 1) {
        return "an unknown day";
    }
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d", &parts)};
}

}  // namespace

std::vector<std::string> namesOf(X509 const& certificate)
{
    std::vector<std::string> hosts;
    std::unique_ptr<GENERAL_NAMES, FreeNames> const names(
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(&certificate, NID_subject_alt_name, nullptr, nullptr)));
    if (!names) {
        hosts.push_back(commonName(*X509_get_subject_name(&certificate)));
    }
    for (int i = 0; names && i < sk_GENERAL_NAME_num(names.get()); ++i) {
        hosts.push_back(hostOf(*sk_GENERAL_NAME_value(names.get(), i)));
    }
    std::erase(hosts, std::string());
    return hosts;
}

bool isFor(X509 const& certificate, std::string const& host)
{
    auto const hosts = namesOf(certificate);
    return std::ranges::any_of(
        hosts, [wanted = normalised(host)](std::string const& each) { return equalsIgnoringCase(each, wanted); });
}

std::string wrongNameText(std::string const& host, X509 const& certificate)
{
    std::string list;
    for (auto const& name : namesOf(certificate)) {
        list += (list.empty() ? "" : " and ") + name;
    }
    return "the certificate of " + host + " is for " + (list.empty() ? "nobody" : list);
}

std::string verificationText(std::string const& host, X509_STORE_CTX& verification)
{
    X509 const* const certificate = X509_STORE_CTX_get_current_cert(&verification);
    int const error = X509_STORE_CTX_get_error(&verification);
    bool const isItsOwn = X509_STORE_CTX_get_error_depth(&verification) == 0;
    std::string const what = (isItsOwn ? "the certificate of " : "the certificate of an authority of ") + host;
    switch (error) {
    case X509_V_ERR_CERT_HAS_EXPIRED:
        return what + " expired on " + dayOf(*X509_get0_notAfter(certificate));
    case X509_V_ERR_CERT_NOT_YET_VALID:
        return what + " is not valid before " + dayOf(*X509_get0_notBefore(certificate));
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
        return what + " is from an unknown authority, \"" + commonName(*X509_get_issuer_name(certificate)) + "\"";
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
        return what + " is signed by itself and not by a trusted authority";
    default:
        return what + " is not accepted: " + X509_verify_cert_error_string(error);
    }
}

}  // namespace telephone::sip
