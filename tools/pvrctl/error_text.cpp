// pvrctl error-text: what the library has users told about a recording that failed, in any of its languages.
#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <numeric>
#include <optional>
#include <pvr_service_api.h>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "languages.h"

namespace pvrctl {
namespace {

constexpr int first_listed = -5;
constexpr int last_listed = 300;
constexpr int never_known = std::numeric_limits<int>::min(); ///< a code that can have no text of its own

/// What the library says of a code in the language that is set; its message's id in none.
std::string text_now(const Service &service, int code)
{
    std::array<char, 255> text{};
    if (svc_pvr_get_err_text(code, 0, text.data()) != PS_SUCCESS) {
        service.check_product();
        throw Failure(ExitCode::failed, "the library gives no text. PVR_LOG=stderr tells why");
    }
    return text.data();
}

struct Message {
    int code;
    std::string id;
    std::string text; ///< its id where it is not translated

    bool is_translated() const { return text != id || id.empty(); } // no error has neither
    Json text_json() const { return is_translated() ? Json(text) : Json(); }
};

/// What the library says of some codes.
class Texts {
public:
    Texts(const Service &service, const std::vector<int> &codes)
        : service_(service), unknown_{never_known, text_now(service, never_known), ""}
    {
        for (const int code : codes)
            messages_.push_back({code, text_now(service, code), ""});
    }

    const std::vector<Message> &messages() const noexcept { return messages_; }

    /// Whether a code does not share the text of all that are unknown, nor is it that of no error.
    bool is_own(const Message &message) const { return !message.id.empty() && message.id != unknown_.id; }

    void keep_own()
    {
        std::erase_if(messages_, [this](const Message &message) { return !is_own(message); });
    }

    /// Takes the texts of the first language that the library has, and tells which it is.
    std::optional<std::string> translate(const std::vector<std::string> &languages)
    {
        for (const std::string &name : languages) {
            const Language language(name);
            unknown_.text = text_now(service_, unknown_.code);
            if (!unknown_.is_translated())
                continue;
            for (Message &message : messages_)
                message.text = text_now(service_, message.code);
            return name;
        }
        return std::nullopt;
    }

private:
    const Service &service_;
    Message unknown_;
    std::vector<Message> messages_;
};

struct ErrorTextWanted {
    int code = 0;
    bool is_all = false;
    std::optional<std::string> language;
};

/// Translates, and tells into which language. Throws when there is none.
std::string translated(Texts &texts, const ErrorTextWanted &wanted)
{
    const std::optional<std::string> language =
        texts.translate(wanted.language ? std::vector{*wanted.language} : users_languages());
    if (language)
        return *language;
    throw Failure(ExitCode::not_found, wanted.language ? "there are no texts in '" + *wanted.language + '\''
                                                       : "there are no texts, not even in English: the library finds "
                                                         "no message catalogue");
}

/// An incomplete catalogue is told of, once what it has is shown.
void require_translations(const std::vector<Message> &messages, const std::string &language)
{
    const auto missing = std::ranges::find_if_not(messages, &Message::is_translated);
    if (missing != messages.end())
        throw Failure(ExitCode::not_found,
                      "there is no text in '" + language + "' for the code " + std::to_string(missing->code));
}

void list_texts(const Service &service, const Output &output, const ErrorTextWanted &wanted)
{
    std::vector<int> codes(last_listed - first_listed + 1);
    std::iota(codes.begin(), codes.end(), first_listed);
    Texts texts(service, codes);
    texts.keep_own();
    const std::string language = translated(texts, wanted);
    Json listed = Json::array();
    std::vector<Row> rows;
    for (const Message &message : texts.messages()) {
        listed.push_back({{"code", message.code}, {"text", message.text_json()}});
        if (message.is_translated())
            rows.push_back({std::to_string(message.code), message.text});
    }
    const std::size_t count = listed.size();
    output.show({{"language", language}, {"texts", std::move(listed)}, {"count", count}}, rows);
    require_translations(texts.messages(), language);
}

void show_text(const Service &service, const Output &output, const ErrorTextWanted &wanted)
{
    Texts texts(service, {wanted.code});
    const std::string language = translated(texts, wanted);
    require_translations(texts.messages(), language);
    const Message &message = texts.messages().front();
    const bool is_own = texts.is_own(message);
    std::vector<Row> rows{{"code", std::to_string(message.code)},
                          {"language", language},
                          {"text", message.id.empty() ? "none: this code is no error" : message.text}};
    if (!is_own && !message.id.empty())
        rows.push_back({"of its own", "no: this stands for every error that is unknown"});
    output.show({{"code", message.code}, {"language", language}, {"text", message.text}, {"own", is_own}}, rows);
}

} // namespace

void add_error_text(Commands &commands)
{
    CLI::App &verb = add_command(commands.root, "error-text",
                                 "Tell what a recording's failure is called. The texts are in the user's language if "
                                 "the library has it, or else in English. It takes no service.",
                                 {"error-text 257", "error-text 257 --lang de", "error-text --all --json"});
    const auto wanted = std::make_shared<ErrorTextWanted>();
    const CLI::Option *code =
        completes(add_number(verb, "CODE", wanted->code, "", "the service's code, as results and signals carry it"),
                  Completes::error_code);
    verb.add_flag("--all", wanted->is_all, "list every code from -5 to 300 that has a text of its own");
    completes(verb.add_option("--lang", wanted->language, "a language, and no other, such as de")->type_name("LANG"),
              Completes::language);
    choose(
        commands, verb,
        [wanted](Service &service, Output &output) {
            wanted->is_all ? list_texts(service, output, *wanted) : show_text(service, output, *wanted);
        },
        [wanted, code] {
            if ((code->count() > 0) == wanted->is_all)
                throw CLI::ValidationError("error-text", "takes one of CODE and --all");
            if (wanted->language && !is_language_name(*wanted->language))
                throw CLI::ValidationError("--lang", "'" + *wanted->language + "' is no name of a language");
        });
}

} // namespace pvrctl
