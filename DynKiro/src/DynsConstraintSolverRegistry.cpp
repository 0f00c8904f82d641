#include <Dyns/DynsConstraintSolverRegistry.h>

#include <Dyns/constraint_solver.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <functional>

namespace {

struct BuiltIn {
    const char* name;
    unsigned id;
};

// The same identifiers in whatever order the static factories are constructed.
constexpr BuiltIn kBuiltIns[] = {{"std_constraint_solver", 0}, {"itr_constraint_solver", 1}};

} // namespace

DynsConstraintSolverFactory::DynsConstraintSolverFactory(const std::string& name) : mName(name) {
    DynsConstraintSolverRegistry::instance().registerFactory(this);
}

DynsConstraintSolverFactory::~DynsConstraintSolverFactory() {
    destroyAll();
    DynsConstraintSolverRegistry::instance().unregisterFactory(this);
}

constraint_solver* DynsConstraintSolverFactory::create() {
    constraint_solver* solver = createImpl();
    if (!solver)
        return nullptr;
    const auto place =
        std::lower_bound(mConstraintSolver.begin(), mConstraintSolver.end(), solver, std::less<>());
    if (place == mConstraintSolver.end() || *place != solver)
        mConstraintSolver.insert(place, solver);
    return solver;
}

void DynsConstraintSolverFactory::destroyAll() {
    std::vector<constraint_solver*> solvers;
    solvers.swap(mConstraintSolver);
    for (const constraint_solver* solver : solvers)
        delete solver;
}

DynsConstraintSolverFactory*
DynsConstraintSolverFactory::findFactoryCreatorOf(const constraint_solver* solver) {
    for (DynsConstraintSolverFactory* factory :
         DynsConstraintSolverRegistry::instance().getFactories()) {
        const auto& list = factory->mConstraintSolver;
        if (std::binary_search(list.begin(), list.end(), solver, std::less<>()))
            return factory;
    }
    return nullptr;
}

bool DynsConstraintSolverFactory::onConstraintSolverDestroyed(constraint_solver* solver) {
    const auto place =
        std::lower_bound(mConstraintSolver.begin(), mConstraintSolver.end(), solver, std::less<>());
    if (place == mConstraintSolver.end() || *place != solver)
        return false;
    mConstraintSolver.erase(place);
    return true;
}

// Never destroyed: static factories and solvers of other modules may outlive any static object here.
DynsConstraintSolverRegistry& DynsConstraintSolverRegistry::instance() {
    static auto* const registry = new DynsConstraintSolverRegistry;
    return *registry;
}

DynsConstraintSolverFactory*
DynsConstraintSolverRegistry::getFactory(const std::string& name) const {
    for (DynsConstraintSolverFactory* factory : mFactories)
        if (factory->getName() == name)
            return factory;
    return nullptr;
}

unsigned DynsConstraintSolverRegistry::getId(const std::string& name) const {
    const auto entry = mIds.find(name);
    if (entry != mIds.end())
        return entry->second;
    KitWarning(0, "The name [%s] is not the name of a valid constraint solver.\n", name.c_str());
    return INVALID_ID;
}

bool DynsConstraintSolverRegistry::isIdValid(unsigned id) const {
    return std::any_of(mIds.begin(), mIds.end(),
                       [id](const auto& entry) { return entry.second == id; });
}

void DynsConstraintSolverRegistry::registerFactory(DynsConstraintSolverFactory* factory) {
    if (!factory || std::find(mFactories.begin(), mFactories.end(), factory) != mFactories.end())
        return;
    const std::string& name = factory->getName();
    if (getFactory(name))
        KitWarning(0,
                   "ConstraintSolverRegistry: Registering more than one factory with the name "
                   "\"%s\" causes undefined behavior.\n",
                   name.c_str());
    if (mIds.find(name) == mIds.end()) {
        const auto* builtIn =
            std::find_if(std::begin(kBuiltIns), std::end(kBuiltIns),
                         [&name](const BuiltIn& candidate) { return name == candidate.name; });
        if (builtIn == std::end(kBuiltIns) && cnt >= kMaxCount) {
            KitWarning(0,
                       "DynsConstraintSolverRegistry::registerFactory: there must be fewer than %u "
                       "kinds of constraint solver.\n",
                       kMaxCount);
            return;
        }
        mIds[name] = builtIn == std::end(kBuiltIns) ? cnt++ : builtIn->id;
    }
    mFactories.push_back(factory);
}

void DynsConstraintSolverRegistry::unregisterFactory(DynsConstraintSolverFactory* factory) {
    const auto place = std::find(mFactories.begin(), mFactories.end(), factory);
    if (place == mFactories.end())
        return;
    mFactories.erase(place);
    if (!getFactory(factory->getName()))
        mIds.erase(factory->getName());
}
