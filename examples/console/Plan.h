// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef EXAMPLES_CONSOLE_PLAN_H
#define EXAMPLES_CONSOLE_PLAN_H

#include <gentra/gentra.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

/// What the user wants, apart from what is built of it: an editing tool's document.
namespace Console {

struct PropertyPlan {
    bool ofMembers;
    Gentra::Parameter parameter; ///< With the default.
};
struct BehaviourPlan {
    std::string kind;                         ///< A registered factory's name.
    std::map<std::string, std::string> links; ///< Names of slots, and of the properties they are to be linked to.
};
struct PoolPlan {
    std::vector<PropertyPlan> properties;
    std::vector<BehaviourPlan> behaviours;
    int members = 0;
};

/// Pools by name, each with its plan. Each pass of the main context fills the pools as planned.
class Document : private Util::EventListener {
public:
    Document();

    /// Plans a pool, unless there is one of that name.
    void AddPool(std::string const& poolName);
    /// Null when there is none of that name.
    [[nodiscard]] Gentra::MemberPool* FindPool(std::string const& poolName);
    /// The plan of a pool that there is.
    [[nodiscard]] PoolPlan& Plan(std::string const& poolName) { return pools.at(poolName).plan; }
    /// Builds all pools as they are planned now. Members begin anew.
    void Build();

private:
    struct Entry {
        PoolPlan plan;
        std::unique_ptr<Gentra::MemberPool> pool;
    };

    void HandleEvent(Util::Event const& event) override;
    static void Link(Gentra::MemberPool& pool, BehaviourPlan const& plan);

    std::map<std::string, Entry> pools;
};

} // namespace Console

#endif
