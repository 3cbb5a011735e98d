#include "telephone/sip/Stack.h"

#include <array>
#include <new>

#include "telephone/sip/Account.h"
#include "telephone/sip/LocalAddresses.h"
#include "telephone/sip/WireText.h"

namespace telephone::sip {

namespace {

struct CompactForm
{
    char letter;
    char const* name;
};

// RFC 3261 section 7.3.3 and the registry of header fields.
constexpr auto kCompactForms = std::to_array<CompactForm>({
    {'b', "Referred-By"},
    {'c', "Content-Type"},
    {'e', "Content-Encoding"},
    {'f', "From"},
    {'i', "Call-ID"},
    {'k', "Supported"},
    {'l', "Content-Length"},
    {'m', "Contact"},
    {'o', "Event"},
    {'r', "Refer-To"},
    {'s', "Subject"},
    {'t', "To"},
    {'u', "Allow-Events"},
    {'v', "Via"},
    {'x', "Session-Expires"},
    {'y', "Identity"},
});

constexpr int kFirstFailure = 1'000'000;  // beyond the numbers of errno
constexpr std::size_t kKeptFailures = 100;

std::array<std::string, kKeptFailures>& failures()
{
    static auto& all = *new std::array<std::string, kKeptFailures>;  // never destroyed, as the stack
    return all;
}

std::string fullName(pl const& name)
{
    if (name.l == 1) {
        char const letter = static_cast<char>(name.p[0] | 0x20);
        for (auto const& form : kCompactForms) {
            if (form.letter == letter) {
                return form.name;
            }
        }
    }
    return text(name);
}

}  // namespace

struct Credentials
{
    std::string user;
    std::string password;
    Logger log;
};

std::string remainingText(mbuf const* buffer)
{
    std::size_t const left = mbuf_get_left(buffer);
    return left ? std::string(reinterpret_cast<char const*>(mbuf_buf(buffer)), left) : std::string();
}

bool fill(Ref<mbuf>& buffer, std::string_view content)
{
    mbuf* made = mbuf_alloc(content.size() + 1);
    if (!made) {
        return false;
    }
    *buffer.out() = made;
    if (mbuf_write_mem(made, reinterpret_cast<std::uint8_t const*>(content.data()), content.size()) != 0) {
        return false;
    }
    made->pos = 0;
    return true;
}

std::string hexText(std::uint64_t number, std::size_t digits)
{
    std::string text(digits, '0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit) {
        *digit = "0123456789abcdef"[number % 16];
        number /= 16;
    }
    return text;
}

std::string addressText(sa const& address)
{
    std::string const host = hostText(address);
    std::string const port = ":" + std::to_string(sa_port(&address));
    return sa_af(&address) == AF_INET6 ? "[" + host + "]" + port : host.empty() ? host : host + port;
}

std::string errorText(int error)
{
    if (error >= kFirstFailure) {
        return failures().at(static_cast<std::size_t>(error - kFirstFailure));
    }
    std::array<char, 128> buffer{};
    return str_error(error, buffer.data(), buffer.size());
}

int failureOf(std::string const& reason)
{
    static std::size_t next = 0;
    next = (next + 1) % kKeptFailures;
    failures().at(next) = reason;
    return kFirstFailure + static_cast<int>(next);
}

Outcome<> sent(int error, std::string const& what)
{
    if (error) {
        return refuse(RefusalKind::kUnavailable, what + " cannot be sent: " + errorText(error));
    }
    return {};
}

Headers headersOf(sip_msg const& message)
{
    Headers headers;
    for (le const* element = message.hdrl.head; element; element = element->next) {
        auto const* header = static_cast<sip_hdr const*>(element->data);
        headers.add(fullName(header->name), unfolded(view(header->val)));
    }
    return headers;
}

Response responseOf(sip_msg const& message)
{
    return {message.scode, plainText(view(message.reason)), headersOf(message), remainingText(message.mb)};
}

Content contentOf(sip_msg const& message)
{
    Content content;
    content.body = remainingText(message.mb);
    if (message.ctyp.type.p) {
        content.type = text(message.ctyp.type) + "/" + text(message.ctyp.subtype) + text(message.ctyp.params);
    }
    return content;
}

std::string headerValue(sip_msg const& message, char const* name)
{
    return headersOf(message).value(name);
}

NameAddr nameAddrOf(sip_taddr const& address)
{
    return NameAddr::parse(view(address.val)).value_or(NameAddr{});
}

std::string contactOf(sip_msg const& message)
{
    sip_hdr const* header = sip_msg_hdr(&message, SIP_HDR_CONTACT);
    sip_addr address;
    if (!header || sip_addr_decode(&address, &header->val) != 0) {
        return {};
    }
    return text(address.auri);
}

std::string localTagOf(sip_msg const& request)
{
    return hexText(request.tag);
}

std::string replyTail(Headers const& headers, Content const& content)
{
    std::string tail = headers.format();
    if (!content.type.empty()) {
        tail += Headers{{"Content-Type", content.type}}.format();
    }
    std::string const body = content.type.empty() ? std::string() : content.body;
    return tail + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

static void destroyCredentials(void* object)
{
    static_cast<Credentials*>(object)->~Credentials();
}

void makeCredentials(Ref<Credentials>& credentials, Account const& account, Logger const& log)
{
    void* const memory = mem_zalloc(sizeof(Credentials), destroyCredentials);
    if (memory) {
        *credentials.out() =
            new (memory) Credentials{account.authUser.empty() ? account.user : account.authUser, account.password, log};
    }
}

int answerChallenge(char** user, char** password, char const*, void* object)
{
    auto const* credentials = static_cast<Credentials const*>(object);
    if (!credentials || credentials->password.empty()) {
        return EAUTH;
    }
    int const error = str_dup(user, credentials->user.c_str());
    return error ? error : str_dup(password, credentials->password.c_str());
}

void reportUnanswered(void const* object, std::string const& reason)
{
    auto const* credentials = static_cast<Credentials const*>(object);
    if (credentials && credentials->log) {
        credentials->log(LogLevel::kWarning, reason);
    }
}

}  // namespace telephone::sip
