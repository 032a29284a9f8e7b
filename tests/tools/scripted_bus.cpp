// A bus of its own with a Recording service that gives scripted answers, for what the development service never says.
// Arguments: METHOD=VALUES, a tuple as GVariant text. Prints the bus's address; carries out lines of its standard
// input ("wait METHOD", "emit SIGNAL VALUES", "answer METHOD=VALUES", "vanish"), confirms each, and ends with it.
#include <algorithm>
#include <iostream>
#include <span>
#include <string>
#include <vector>

#include "support/private_bus.h"
#include "support/scripted_service.h"

namespace {

bool script(support::ScriptedService &service, const std::string &answer)
{
    const std::size_t separator = answer.find('=');
    if (separator == std::string::npos) {
        std::cerr << "scripted_bus: '" << answer << "' is not METHOD=VALUES\n";
        return false;
    }
    service.script(answer.substr(0, separator), support::answers(answer.substr(separator + 1)));
    return true;
}

/// Takes the requests up to the first of the method.
void wait_for(support::ScriptedService &service, const std::string &method)
{
    for (;;) {
        service.wait_for_request();
        const std::vector<support::Request> requests = service.requests();
        if (std::ranges::find(requests, method, &support::Request::method) != requests.end())
            return;
    }
}

bool carry_out(support::ScriptedService &service, const std::string &line)
{
    const std::size_t verb_end = std::min(line.find(' '), line.size());
    const std::string verb = line.substr(0, verb_end);
    const std::string rest = line.substr(std::min(verb_end + 1, line.size()));
    if (verb == "answer")
        return script(service, rest);
    if (verb == "wait") {
        wait_for(service, rest);
    } else if (verb == "emit") {
        const std::size_t name_end = std::min(rest.find(' '), rest.size());
        service.emit(rest.substr(0, name_end), rest.substr(name_end));
    } else if (verb == "vanish") {
        service.vanish();
    } else {
        std::cerr << "scripted_bus: '" << line << "' is not known\n";
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    support::ScriptedService service;
    for (const std::string answer : std::span(argv, static_cast<std::size_t>(argc)).subspan(1))
        if (!script(service, answer))
            return 2;
    std::cout << support::bus().address() << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        if (!carry_out(service, line))
            return 2;
        std::cout << "done" << std::endl;
    }
}
