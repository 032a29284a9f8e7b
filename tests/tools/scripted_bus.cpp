// A bus of its own with a Recording service that gives scripted answers, for what the development service never
// says. Arguments: METHOD=VALUES, a tuple as GVariant text. Prints the bus's address; ends with its standard input.
#include <iostream>
#include <limits>
#include <span>
#include <string>

#include "support/private_bus.h"
#include "support/scripted_service.h"

int main(int argc, char **argv)
{
    support::ScriptedService service;
    for (const std::string answer : std::span(argv, static_cast<std::size_t>(argc)).subspan(1)) {
        const std::size_t separator = answer.find('=');
        if (separator == std::string::npos) {
            std::cerr << "scripted_bus: '" << answer << "' is not METHOD=VALUES\n";
            return 2;
        }
        service.script(answer.substr(0, separator), support::answers(answer.substr(separator + 1)));
    }
    std::cout << support::bus().address() << std::endl;
    std::cin.ignore(std::numeric_limits<std::streamsize>::max());
}
