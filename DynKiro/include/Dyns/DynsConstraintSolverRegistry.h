#pragma once
#include <Kit/KitApi.h>

#include <map>
#include <string>
#include <typeinfo>
#include <vector>

class constraint_solver;

/// Makes constraint solvers of one kind and knows those that are alive. Registers itself by name.
class HY_API DynsConstraintSolverFactory {
public:
    explicit DynsConstraintSolverFactory(const std::string& name);
    DynsConstraintSolverFactory(const DynsConstraintSolverFactory&) = delete;
    DynsConstraintSolverFactory& operator=(const DynsConstraintSolverFactory&) = delete;
    /// Destroys all solvers that it made and unregisters itself.
    virtual ~DynsConstraintSolverFactory();
    [[nodiscard]] virtual const std::type_info& getRTTI() const = 0;

    /// A new solver, owned by the caller and known to the factory; null if the kind makes none.
    [[nodiscard]] constraint_solver* create();
    void destroyAll();
    [[nodiscard]] const std::string& getName() const { return mName; }
    [[nodiscard]] const std::vector<constraint_solver*>& getConstraintList() const {
        return mConstraintSolver;
    }
    /// The factory that made a solver, or null.
    [[nodiscard]] static DynsConstraintSolverFactory*
    findFactoryCreatorOf(const constraint_solver*);
    /// Forgets a solver; answers whether it was known.
    bool onConstraintSolverDestroyed(constraint_solver*);

protected:
    virtual constraint_solver* createImpl() = 0;

private:
    std::string mName;
    std::vector<constraint_solver*> mConstraintSolver; ///< sorted by address, for look-up only
};

/// The factory of solver class T.
template <typename T>
class DynsConstraintSolverFactoryImpl : public DynsConstraintSolverFactory {
public:
    using DynsConstraintSolverFactory::DynsConstraintSolverFactory;
    [[nodiscard]] const std::type_info& getRTTI() const override { return typeid(T); }

protected:
    constraint_solver* createImpl() override { return new T; }
};

/// The kinds of constraint solver that exist, by name and identifier: 0 "std_constraint_solver",
/// 1 "itr_constraint_solver", others from 2 on in the order of registration.
class HY_API DynsConstraintSolverRegistry {
public:
    static constexpr unsigned INVALID_ID = ~0U;
    static constexpr unsigned kMaxCount = 20; ///< identifiers at or above are refused

    static DynsConstraintSolverRegistry& instance();

    [[nodiscard]] DynsConstraintSolverFactory* getFactory(const std::string& name) const;
    /// In the order of registration.
    [[nodiscard]] const std::vector<DynsConstraintSolverFactory*>& getFactories() const {
        return mFactories;
    }
    /// Identifier of a name; an unknown one warns and gives INVALID_ID.
    [[nodiscard]] unsigned getId(const std::string& name) const;
    [[nodiscard]] bool isIdValid(unsigned id) const;
    void registerFactory(DynsConstraintSolverFactory*);
    void unregisterFactory(DynsConstraintSolverFactory*);

private:
    std::vector<DynsConstraintSolverFactory*> mFactories;
    std::map<std::string, unsigned> mIds;
    unsigned cnt = 2;
};
