// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A console to try things in: plan pools, have them built, run frames, look at members. "help" lists the commands.
#include "Behaviours.h"
#include "Plan.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <sstream>

using namespace Gentra;

namespace {

using Console::Document;

constexpr char const* TYPES[] = {"undefined", "value",          "vector",          "selection",
                                 "behaviour", "data reference", "fixed-size data", "text"};

/// The words after a command, of which the first is a pool's name.
struct Arguments {
    MemberPool& pool;
    Console::PoolPlan& plan;
    std::istringstream& words;
};

/// The next word, or nothing.
std::string Word(std::istringstream& words) {
    std::string word;
    words >> word;
    return word;
}

/// Reads a whole number from 0 to a million, or leaves it as it is.
bool ReadCount(std::istringstream& words, int& count) {
    constexpr int MOST = 1'000'000;
    std::istringstream word(Word(words));
    int number = -1;
    bool const isRead = word >> number && word.eof() && number >= 0 && number <= MOST;
    count = isRead ? number : count;
    return isRead;
}

/// Reads up to three numbers, as many as there are; false when something else is there.
bool ReadNumbers(std::istringstream& words, float (&numbers)[3], int& count) {
    for (count = 0; count < 3 && words >> numbers[count]; ++count) {
    }
    return words.eof() || (words >> std::ws).eof();
}

// Planning.

/// member|pool value|vector NAME [NUMBERS]
bool AddProperty(Arguments const& arguments) {
    std::string const owner = Word(arguments.words);
    std::string const type = Word(arguments.words);
    std::string const name = Word(arguments.words);
    if ((owner != "member" && owner != "pool") || (type != "value" && type != "vector") || name.empty()) {
        return false;
    }
    float numbers[3] = {};
    int count = 0;
    if (!ReadNumbers(arguments.words, numbers, count)) {
        return false;
    }
    Parameter parameter;
    parameter.MakePropertyCreationParameter(type == "value" ? VALUE : VECTOR, name, false);
    parameter.value = numbers[0];
    parameter.vector = {numbers[0], numbers[1], numbers[2]};
    arguments.plan.properties.push_back({owner == "member", parameter});
    return true;
}

/// KIND [SLOT=PROPERTY ...]
bool AddBehaviour(Arguments const& arguments) {
    Console::BehaviourPlan plan{Word(arguments.words), {}};
    Util::RefCountPtr<Behaviour> const behaviour = ContextManager::GetNewBehaviourFromName(plan.kind);
    for (std::string link; arguments.words >> link;) {
        std::size_t const sign = std::min(link.find('='), link.size());
        std::string const slot = link.substr(0, sign);
        if (sign == link.size() || behaviour->GetLinkIndexFromPropertyName(slot) < 0) {
            return false;
        }
        plan.links[slot] = link.substr(sign + 1);
    }
    if (behaviour->GetName().empty()) { // nobody makes one of that name
        return false;
    }
    arguments.plan.behaviours.push_back(plan);
    return true;
}

/// COUNT
bool PlanMembers(Arguments const& arguments) {
    return ReadCount(arguments.words, arguments.plan.members);
}

/// Forgets the pool's plan.
bool Forget(Arguments const& arguments) {
    arguments.plan = {};
    return true;
}

// Working with what is built.

/// PROPERTY INDEX NUMBERS
bool Set(Arguments const& arguments) {
    Util::RefCountPtr<Property> const property = arguments.pool.GetPropertyFromName(Word(arguments.words));
    int index = 0;
    int count = 0;
    float numbers[3] = {};
    bool const isNumeric = property->GetPropertyType() == VALUE || property->GetPropertyType() == VECTOR;
    if (!isNumeric || !ReadCount(arguments.words, index) || !ReadNumbers(arguments.words, numbers, count) ||
        count == 0 || property->GetDataFromMemberSelection(arguments.pool, index) == nullptr) {
        return false;
    }
    property->SetDataToMemberSelection(numbers, arguments.pool, index);
    return true;
}

/// COUNT
bool RunFrames(Arguments const& arguments) {
    int count = 1;
    if (!(arguments.words >> std::ws).eof() && !ReadCount(arguments.words, count)) {
        return false;
    }
    for (; count > 0; --count) {
        arguments.pool.ProcessMemberPool();
    }
    return true;
}

void PrintDatum(Property& property, MemberPool& pool, int index) {
    void const* const datum = property.GetDataFromMemberSelection(pool, index);
    if (datum != nullptr && property.GetPropertyType() == VALUE) {
        std::cout << ' ' << Datum::Read<float>(datum);
    } else if (datum != nullptr && property.GetPropertyType() == VECTOR) {
        auto const vector = Datum::Read<Math::Vec3>(datum);
        std::cout << " (" << vector.x << ' ' << vector.y << ' ' << vector.z << ')';
    }
}

bool Show(Arguments const& arguments) {
    for (auto const& property : arguments.pool.GetAllProperties()) {
        std::cout << "  " << property->GetName() << ", " << TYPES[property->GetPropertyType()]
                  << (property->GetPropertyOwner() == MEMBER ? ":" : " of the pool:");
        int const count = property->GetPropertyOwner() == MEMBER ? arguments.pool.GetNumMembers() : 1;
        for (int i = 0; i < count; ++i) {
            PrintDatum(*property, arguments.pool, i);
        }
        std::cout << '\n';
    }
    for (auto const& behaviour : arguments.pool.GetAllBehaviours()) {
        std::cout << "  " << behaviour->GetName() << (behaviour->ReadyToUse() ? ", ready\n" : ", not ready\n");
    }
    return true;
}

// Commands.

struct Command {
    char const* arguments;
    std::function<bool(Arguments const&)> run;
};
std::map<std::string, Command> const COMMANDS = {
    {"property", {"POOL member|pool value|vector NAME [NUMBERS]", AddProperty}},
    {"behaviour", {"POOL KIND [SLOT=PROPERTY ...]", AddBehaviour}},
    {"members", {"POOL COUNT", PlanMembers}},
    {"forget", {"POOL", Forget}},
    {"set", {"POOL PROPERTY INDEX NUMBERS", Set}},
    {"frames", {"POOL [COUNT]", RunFrames}},
    {"show", {"POOL", Show}},
};

void PrintHelp() {
    std::cout << "  pool NAME\n  build\n  log\n  quit\n";
    for (auto const& [name, command] : COMMANDS) {
        std::cout << "  " << name << ' ' << command.arguments << '\n';
    }
    std::cout << "behaviours:";
    for (Util::String const& kind : ContextManager::GetBehavioursByName()) {
        std::cout << ' ' << kind;
    }
    std::cout << '\n';
}

void PrintLog() {
    std::vector<char> messages(64 * 1024);
    GlobalMessageManager::GetAllMessages(messages.data(), static_cast<int>(messages.size()));
    GlobalMessageManager::ClearAllMessages();
    std::cout << messages.data();
}

void Perform(Document& document, std::string const& line) {
    std::istringstream words(line);
    std::string const verb = Word(words);
    if (verb.empty()) {
        return;
    }
    if (verb == "help") {
        PrintHelp();
    } else if (verb == "build") {
        document.Build();
    } else if (verb == "log") {
        PrintLog();
    } else if (verb == "pool") {
        std::string const poolName = Word(words);
        if (poolName.empty() || !(words >> std::ws).eof()) {
            std::cout << "this is: pool NAME\n";
        } else {
            document.AddPool(poolName);
        }
    } else if (auto const command = COMMANDS.find(verb); command != COMMANDS.end()) {
        std::string const poolName = Word(words);
        MemberPool* const pool = document.FindPool(poolName);
        if (pool == nullptr) {
            std::cout << "there is no pool \"" << poolName << "\"\n";
        } else if (!command->second.run({*pool, document.Plan(poolName), words})) {
            std::cout << "this is: " << verb << ' ' << command->second.arguments << '\n';
        }
    } else {
        std::cout << "there is no command \"" << verb << "\"; help lists them\n";
    }
}

} // namespace

/// With the argument --echo each line is printed again, for sessions that are not typed in.
int main(int argc, char** argv) {
    bool const echoes = argc > 1 && std::string(argv[1]) == "--echo";
    Console::RegisterBehaviours();
    Document document;
    std::cout << "\"help\" lists the commands.\n> " << std::flush;
    for (std::string line; std::getline(std::cin, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (echoes) {
            std::cout << line << '\n';
        }
        if (line == "quit") {
            return 0;
        }
        Perform(document, line);
        std::cout << "> " << std::flush;
    }
}
