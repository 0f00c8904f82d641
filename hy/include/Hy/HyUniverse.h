#pragma once
#include <Hy/HyCallbackList.h>
#include <Hy/HyEnabledListIterator.h>
#include <Hy/HyIntersectSubscriber.h>
#include <Hy/HySafeWalk.h>
#include <Hy/HyStepperBase.h>
#include <Hy/HyVector3.h>

#include <memory>
#include <vector>

class CxSpace;
struct ColModel;
struct DynBaseConstraint;
struct DynBody;
struct DynWorld;

namespace Hy {
class HyBridge;
class HyCollisionGeometry;
class HyCollisionGeometryPair;
class HyCollisionPairRequest;
class HyCollisionRule;
class HyCollisionRuleStore;
class HyConstraint;
class HyContactMaterial;
class HyDynamicsExtension;
class HyDynamicsContact;
class HyDynamicsContactInput;
class HyMaterial;
class HyMaterialTable;
class HyPart;
class HySolverParameters;
class HyUniverseObserver;
struct HyResponsePair;
class HyUserContacts;
struct HySavedCoordinates;
class HyUniverseState;

/// One simulated world: the parts in it, the constraints between them, and the dynamics world below.
///
/// Joins a frame with HyFrame::addUniverse(), is stepped by HyFrame::step(), and leaves the frame
/// when it is destroyed. It owns the parts and constraints that it holds. Contents should not change
/// while it is stepping: such a call is warned of and carried out.
class HY_API HyUniverse : public HyClass<kHyUniverseClassId, HyStepperBase> {
public:
    using Parts = HyWalkedObjects<HyPart>;
    using Constraints = HyWalkedObjects<HyConstraint>;
    using CollisionGeometries = HyWalkedObjects<HyCollisionGeometry>;
    using Extensions = HyWalkedObjects<HyDynamicsExtension>;
    using IntersectSubscriber = HyIntersectSubscriber;
    using eIntersectEventType = Hy::eIntersectEventType;

    /// Duration of each stage when it ran last, ms. All are zeroed when a step begins.
    struct UniverseTimings {
        HyReal advanceKinematics = 0;
        HyReal solveDynamics = 0;
        HyReal integrate = 0;
        HyReal updateSubscribers = 0;
        HyReal preStepParts = 0;
        HyReal postStepParts = 0;
        HyReal preStepExtensions = 0;
        HyReal preCollisionExtensions = 0;
        HyReal stepExtensions = 0;
        HyReal postStepExtensions = 0;
        HyReal applyCollisionRules = 0;
        HyReal collisionDetectionBroadPhase = 0;
        HyReal collisionDetectionContactGeneration = 0;
        HyReal intersectSubscribers = 0; ///< within the contact generation
    };

    /// Is called in each detection, so in each substep, before the solve. Not owned.
    class HY_API UpdateSubscriber {
    public:
        virtual ~UpdateSubscriber() = default;
        virtual void update(HyUniverse* universe) = 0;
        /// The universe was brought to another state.
        virtual void reset() = 0;
    };

    /// How the solver takes the partitions of a step: by its own choice, in one pass by size, or
    /// group after group.
    enum PartitionSplitting : int {
        kPartitionSplittingAutomatic = 0,
        kPartitionSplittingOnePass = 1,
        kPartitionSplittingGroup = 2,
    };

    /// Response ids of geometries; applications may add more.
    enum ResponseID : int {
        kResponsePart = 0,   ///< makes contacts
        kResponseSensor = 1, ///< only tells subscribers
        kResponseParticle = 2,
        kResponseSphParticle = 3,
        kResponseUser = 4,
        kMaxResponseID = 4,
    };

    using DynamicPartIterator = HyEnabledListIterator<DynBody, HyPart>;
    using EnabledConstraintsIterator = HyEnabledListIterator<DynBaseConstraint, HyConstraint>;
    using DynamicsContactIterator = HyEnabledListIterator<DynBaseConstraint, HyDynamicsContact>;

    // Life.

    /// A universe with earth's gravity and auto-sleep on.
    /// @param maxCollisionGeometries capacity, raised to an even number
    /// @param maxCollisionPairs capacity
    /// @param materialTable not owned; null: the universe makes a table of its own
    HyUniverse(unsigned maxCollisionGeometries, unsigned maxCollisionPairs,
               HyMaterialTable* materialTable);
    /// Tells the observers, then destroys all contents.
    ~HyUniverse() override;
    [[nodiscard]] const char* getClassName() const override { return "HyUniverse"; }
    [[nodiscard]] unsigned getCollisionGeometryMaxCount() const {
        return mCollisionGeometriesMaxCount;
    }

    // Parts.

    /// Takes a part, out of another universe if it is in one. Answers false for null and for a part
    /// that is here already.
    bool addPart(HyPart* part);
    /// Gives a part back to the caller. Answers it, or null if it was not here.
    HyPart* removePart(HyPart* part);
    /// Removes and deletes a part; nothing if it is not here.
    void destroyPart(HyPart* part);
    /// Removes and deletes all parts, the youngest first.
    void destroyParts();
    /// In the order of creation.
    [[nodiscard]] const Parts& getParts() const { return mParts; }

    /// Visits the parts that are awake: dynamic in effect, and merge roots. Elements may be removed,
    /// put to sleep or destroyed on the way.
    [[nodiscard]] DynamicPartIterator dynamicPartBegin();
    [[nodiscard]] DynamicPartIterator dynamicPartEnd();

    // Constraints.

    /// As the operations on parts. A constraint here acts if it is enabled and its parts are here.
    bool addConstraint(HyConstraint* constraint);
    HyConstraint* removeConstraint(HyConstraint* constraint);
    void destroyConstraint(HyConstraint* constraint);
    void destroyConstraints();
    /// In the order of creation.
    [[nodiscard]] const Constraints& getConstraints() const { return mConstraints; }

    /// Visits the constraints that act. Elements may be removed, disabled or destroyed on the way.
    [[nodiscard]] EnabledConstraintsIterator enabledConstraintsBegin();
    [[nodiscard]] EnabledConstraintsIterator enabledConstraintsEnd();
    /// Visits the contacts that act, likewise.
    [[nodiscard]] DynamicsContactIterator dynamicsContactBegin();
    [[nodiscard]] DynamicsContactIterator dynamicsContactEnd();

    // Extensions.

    /// As the operations on parts.
    bool addExtension(HyDynamicsExtension* extension);
    HyDynamicsExtension* removeExtension(HyDynamicsExtension* extension);
    void destroyExtension(HyDynamicsExtension* extension);
    void destroyExtensions();
    /// In the order of creation, in which they are called.
    [[nodiscard]] const Extensions& getExtensions() const { return mExtensions; }

    // Materials.

    [[nodiscard]] HyMaterialTable* getMaterialTable() const { return mMaterialTable; }
    /// Takes another table, which is not owned and stays valid; a table of the universe's own goes.
    /// Null: a warning, nothing changes.
    void setMaterialTable(HyMaterialTable* table);
    /// HyMaterialTable::getMaterial() of the table.
    [[nodiscard]] HyMaterial* getMaterial(const char* name) const;
    /// HyMaterialTable::getContactMaterial() of the table.
    [[nodiscard]] HyContactMaterial* getContactMaterial(const HyMaterial* material1,
                                                        const HyMaterial* material2) const;
    /// HyMaterialTable::dump() of the table.
    void dumpMaterialPropertyTable(const char* filename) const;

    // Collision geometries; those of parts come and go with their part.

    bool addCollisionGeometry(HyCollisionGeometry* geometry);
    HyCollisionGeometry* removeCollisionGeometry(HyCollisionGeometry* geometry);
    void destroyCollisionGeometry(HyCollisionGeometry* geometry);
    void destroyCollisionGeometries();
    /// In the order of creation.
    [[nodiscard]] const CollisionGeometries& getCollisionGeometries() const {
        return mCollisionGeometries;
    }

    // Pairs of geometries. Answers false unless both are enabled and in one space. What is switched
    // between steps acts in the next one.

    bool enablePairIntersect(HyCollisionGeometry* a, HyCollisionGeometry* b);
    bool disablePairIntersect(HyCollisionGeometry* a, HyCollisionGeometry* b);
    bool enablePairIntersect(HyCollisionGeometry* a, HyPart* b);
    bool disablePairIntersect(HyCollisionGeometry* a, HyPart* b);
    bool enablePairIntersect(HyPart* a, HyPart* b);
    bool disablePairIntersect(HyPart* a, HyPart* b);
    [[nodiscard]] bool getPairIntersectEnabled(const HyCollisionGeometry* a,
                                               const HyCollisionGeometry* b) const;
    void enablePairsWith(HyCollisionGeometry* geometry);
    void disablePairsWith(HyCollisionGeometry* geometry);
    void enablePairsWith(HyPart* part);
    void disablePairsWith(HyPart* part);
    void enableAllPairs();
    void disableAllPairs();
    /// Pairs of geometries of parts that are not dynamic.
    void enableKinematicPairs();
    void disableKinematicPairs();
    [[nodiscard]] std::size_t getPairEnabledCount() const;
    /// Whether the boxes overlap.
    [[nodiscard]] bool isPairNearby(const HyCollisionGeometry* a,
                                    const HyCollisionGeometry* b) const;
    [[nodiscard]] bool isPairNearby(const HyPart* a, const HyPart* b) const;
    /// Null unless the boxes overlap.
    [[nodiscard]] HyCollisionGeometryPair*
    getCollisionGeometryPair(const HyCollisionGeometry* a, const HyCollisionGeometry* b) const;
    /// The contacts of two geometries of parts; empty where there are none. Valid until the next step.
    [[nodiscard]] HyDynamicsContactInput
    getDynamicsContactInputOnPair(const HyCollisionGeometry* a, const HyCollisionGeometry* b) const;

    // How pairs are looked at and what is done with them.

    /// Request of pairs of parts whose geometries have these request ids; grows the table.
    HyCollisionPairRequest& getPartPartCollisionPairRequest(int id1, int id2);
    [[nodiscard]] int getPartPartCollisionRequestMaxIndex() const;
    void setPartPartCollisionRequestMaxIndex(int index);
    /// A new request id that is looked at as the template.
    int getNewPartPartCollisionRequestID(int templateID);
    HyCollisionPairRequest& getSensorPartCollisionPairRequest();
    HyCollisionPairRequest& getSensorSensorCollisionPairRequest();
    /// Ids out of range: a warning, and the pair of parts' or no change.
    [[nodiscard]] const HyResponsePair& getResponsePair(int id1, int id2) const;
    void setResponsePair(int id1, int id2, const HyResponsePair& response);
    [[nodiscard]] int getResponsePairMaxIndex() const;
    void setResponsePairMaxIndex(int index);
    int getNewResponseIDFromTemplateID(int templateID);
    [[nodiscard]] bool haveSameResponseFunction(int id1, int id2) const;
    /// Not owned; the ids in either order. At a place in the list of who is told, the end if it is
    /// shorter.
    void addIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                IntersectSubscriber* subscriber, unsigned priority = 0);
    bool removeIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                   IntersectSubscriber* subscriber);
    /// Place in the list, the largest number if it is not there.
    [[nodiscard]] unsigned getIntersectSubscriberPriority(int id1, int id2,
                                                          eIntersectEventType event,
                                                          const IntersectSubscriber* s) const;
    void setAcceptNonDynamicPairCollision(bool on);
    [[nodiscard]] bool getAcceptNonDynamicPairCollision() const;
    /// Intersects pairs on the frame's workers; off at first.
    void setCollisionIntersectMultithreaded(bool on);
    [[nodiscard]] bool getCollisionIntersectMultithreaded() const;
    /// Computes boxes on the frame's workers; off at first.
    void setCollisionBroadPhaseMultithreaded(bool on);
    [[nodiscard]] bool getCollisionBroadPhaseMultithreaded() const {
        return mBroadPhaseMultithreaded;
    }
    void setCollisionMultithreaded(bool on);
    [[nodiscard]] bool getCollisionMultithreaded() const;
    /// Merges the contacts of all geometries of the same two parts and simplifies them together: fewer
    /// contacts for parts of many geometries. Off at first. Not from a response or subscriber: a
    /// warning, and nothing happens.
    void setPartPairContactMergingEnabled(bool on);
    [[nodiscard]] bool getPartPairContactMergingEnabled() const;
    [[nodiscard]] unsigned getCollisionGeometryPairMaxCount() const;
    /// Contacts that a pair may give before its buffer grows, above 0. Not while stepping.
    void setContactBufferSize(int size);
    /// Distance at which contacts of a geometry begin, m, for models made from now on in the process;
    /// finite and not negative, otherwise a warning and no change.
    static void setDefaultContactTolerance(HyReal tolerance);
    [[nodiscard]] static HyReal getDefaultContactTolerance();
    /// Brings all contacts up to date with the present positions, of sleeping parts as well, which
    /// stay asleep.
    /// @param enableSubscribers whether intersect subscribers hear of it
    void resetContacts(bool enableSubscribers);

    // Collision rules, see HyCollisionRule. Those that name an object go with it.

    /// Takes a copy of a rule, whose objects are alive, and answers the ID that it gave it: the first
    /// is 1.
    unsigned addCollisionRule(const HyCollisionRule& rule);
    std::vector<unsigned> addCollisionRules(const std::vector<HyCollisionRule>& rules);
    /// Removes the rule of an ID; nothing if there is none.
    void removeCollisionRule(unsigned id);
    void removeCollisionRules(const std::vector<unsigned>& ids);
    /// Removes all rules.
    void removeCollisionRules();
    /// In the order of HyCollisionRule::operator<, equivalent ones in the order of adding.
    [[nodiscard]] const std::vector<HyCollisionRule>& getCollisionRules() const;
    /// While suspended, pairs stay as they are; afterwards all rules are applied anew.
    void setCollisionRulesSuspended(bool on);
    [[nodiscard]] bool getCollisionRulesSuspended() const { return mCollisionRulesSuspended; }

    // Contacts that the application makes. One acts through one step, and is then disabled until
    // HyDynamicsContact::enableContact() lets it act through the next.

    /// An enabled contact, owned by the universe. It has surface 0: give a compliant one its share.
    /// @param part1,part2 null stands for the world; one of them must be a dynamic part that is not
    ///   frozen, and none in another universe. Otherwise a warning, and null
    /// @param contactMaterial is copied; null: that of the default material with itself
    /// @param position,normal world axes; the normal points towards part 1. Not finite, or a normal of
    ///   zero: a warning, and null
    /// @param penetration m
    HyDynamicsContact* createUserDynamicsContact(HyPart* part1, HyPart* part2,
                                                 const HyContactMaterial* contactMaterial,
                                                 const HyVector3& position, const HyVector3& normal,
                                                 HyReal penetration);
    /// Nothing for a contact that is not here. In the middle of a solve: a warning, and it stays.
    void deleteUserDynamicsContact(HyDynamicsContact* contact);
    void deleteAllUserDynamicsContacts();
    /// In the order of making.
    [[nodiscard]] const HyArray<HyDynamicsContact*>& getUserDynamicsContacts() const;

    // Observers and subscribers; not owned.

    /// Lets an observer follow the contents; it leaves the universe that it observed before. Null,
    /// and one that is here already: nothing.
    /// @param notify tell it of what is here
    void registerObserver(HyUniverseObserver* observer, bool notify);
    /// @param notify tell it of the removal of what is here
    void unregisterObserver(HyUniverseObserver* observer, bool notify);
    /// Null, and one that is here already: nothing.
    void addUpdateSubscriber(UpdateSubscriber* subscriber);
    void removeUpdateSubscriber(UpdateSubscriber* subscriber);
    [[nodiscard]] bool containsUpdateSubscriber(const UpdateSubscriber* subscriber) const;
    [[nodiscard]] unsigned getUpdateSubscriberCount() const;
    /// In the order of adding; null for an index out of range.
    [[nodiscard]] UpdateSubscriber* getUpdateSubscriber(unsigned index) const;

    // Settings.

    /// m/s². Wakes every part. Not finite: a warning, nothing changes.
    void setGravity(const HyVector3& gravity);
    void setGravity(HyReal x, HyReal y, HyReal z);
    /// (0, 0, -9.80665) m/s².
    void setEarthGravity();
    [[nodiscard]] HyVector3 getGravity() const;
    /// Lets parts at rest fall asleep.
    void setAutoSleep(bool on);
    [[nodiscard]] bool getAutoSleep() const;

    // Settings of the solver, forwarded to the dynamics world.

    /// Most coupling passes of any partition.
    void setSolverMaxCouplingIteration(int count);
    [[nodiscard]] int getSolverMaxCouplingIteration() const;
    /// Solves partitions on the frame's thread pool.
    void setDynamicsMultithreaded(bool on);
    [[nodiscard]] bool getDynamicsMultithreaded() const;
    /// Most partitions that are solved in one slice; nothing unless above 0.
    void setMaxSimultaneousSolverCount(int count);
    [[nodiscard]] int getMaxSimultaneousSolverCount() const;
    void setSolverPartitionSplitting(PartitionSplitting splitting);
    [[nodiscard]] PartitionSplitting getSolverPartitionSplitting() const;
    /// Solver group whose settings all secondary partitions take; negative, as at the start: that of
    /// their own.
    void setGlobalCouplingSolverGroup(int group) { mGlobalCouplingSolverGroup = group; }
    [[nodiscard]] int getGlobalCouplingSolverGroup() const { return mGlobalCouplingSolverGroup; }
    /// Most constraints in a secondary partition, at least 1.
    void setPartitionerMaxSecondarySize(int count);
    [[nodiscard]] int getPartitionerMaxSecondarySize() const;
    /// Constraints that a partition may reach into other solver groups; -1 lets partitions disregard
    /// the groups.
    void setPartitionerCrossGroupingDepth(int depth);
    [[nodiscard]] int getPartitionerCrossGroupingDepth() const;

    // Settings by solver group.

    /// Settings of a group, created with all below it on demand: a new group starts like group 0.
    /// The address stays while the universe lives, which owns them.
    /// @param group negative: null; above 65535: a warning and null
    HySolverParameters* getSolverParameters(int group);
    /// Number of solver groups that have settings.
    [[nodiscard]] int getSolverParametersCount() const;
    /// Damping and kinetic losses of a group from its compliances, critical for the frame's time step.
    /// @param half_life steps in which an error falls, finite and not negative; otherwise a warning,
    ///   nothing changes
    void setCriticalConstraintParameters(int group, HyReal half_life);
    /// Damping that setCriticalConstraintParameters() gives a row of this stiffness: N s/m for N/m,
    /// N m s/rad for N m/rad.
    /// @param stiffness above 0; DBL_MAX is rigid. Otherwise a warning, and 0
    [[nodiscard]] HyReal getCriticalDamping(HyReal stiffness, HyReal half_life) const;
    /// The kinetic loss likewise, m/(N s) or rad/(N m s).
    [[nodiscard]] HyReal getCriticalLoss(HyReal stiffness, HyReal half_life) const;

    // How the solver fared since the universe was made.

    /// Solves of an island that gave up or used all their passes.
    [[nodiscard]] long long getSolverUnconvergedCount() const;
    /// Those of them that sweeps of the iterative solver finished.
    [[nodiscard]] long long getSolverFallbackCount() const;

    // State.

    /// Captures parts, constraints, extensions, gravity and auto-sleep. Owned by the caller.
    [[nodiscard]] HyUniverseState* createState();
    /// Brings back what the state captured, of what is still here. Null: nothing. The state of
    /// another universe, or a call while stepping: a warning, nothing changes.
    void restoreState(HyUniverseState* state);
    /// Stops all parts and clears their loads.
    void resetDynamics();
    /// Prints a line for each constraint frame: its parts, constraints and rows at most so far.
    void printDynamicsSolverMemoryUsage() const;

    // Diagnostics.

    /// Prints on the error stream what is implausible in dynamic parts and constraints. Changes
    /// nothing.
    /// @param tag begins each line; null for none
    /// @param level above 1: also what motors, locks and stops are set to
    void verifyDynamics(const char* tag, int level) const;
    /// Prints on the error stream what may make the simulation unstable. Changes nothing.
    void verifyUniverseContent() const;
    /// Writes a readable report of the contents into a file.
    /// @param fileName one that can't be written: a warning
    void printContent(const char* fileName) override;
    /// Number of partitions of the last solve.
    [[nodiscard]] int getLastPartitionCount() const;
    [[nodiscard]] const UniverseTimings& getUniverseTimings() const { return mUniverseTimings; }

    // Stepping.

    /// True from detection until the end of integration.
    [[nodiscard]] bool isStepping() const { return mStepping; }
    /// Earliest time of impact of the present substep, s; the whole time step if there is none.
    [[nodiscard]] virtual HyReal getCollisionSafeTime() const;
    void restoreExternalForcesForSubstepping() override;

    // For parts and constraints.

    /// A part's body enters or leaves the dynamics world. While stepping: a warning, and it does.
    void insertDynBody(DynBody* body);
    void removeDynBody(DynBody* body);
    /// The same for a constraint's record.
    void insertDynConstraint(DynBaseConstraint* record);
    /// The same for a geometry's model.
    void insertColModel(ColModel* model);
    void removeColModel(ColModel* model);
    /// A contact's record is about to go.
    void dynContactLeaves(const DynBaseConstraint* record) { mContactVisits.leaves(record); }
    /// Collision rules are to look at the geometry again.
    void collisionGeometryDirty(HyCollisionGeometry* geometry);
    void removeDynConstraint(DynBaseConstraint* record);
    /// The part wants HyPart::preStep() at the start of the next step; asked once for each step.
    void partNeedsPreStep(HyPart* part);
    /// The part wants HyPart::postStep() at the end of the present step, or else of the next, though
    /// it sleeps; asked once for each step.
    void partNeedsPostStep(HyPart* part);
    /// The part has left; it is called no more.
    void partLeavesPreStep(HyPart* part);
    [[nodiscard]] DynWorld* getDynWorld() const { return mWorld; }
    [[nodiscard]] CxSpace* getColSpace() const { return mSpace; }
    [[nodiscard]] HyBridge* getBridge() const { return mBridge.get(); }

protected:
    void preUpdateImpl() override;
    void detectCollisionsImpl(HyReal dt) override;
    void advanceKinematicsImpl(HyReal dt) override;
    void solveDynamicsImpl(HyReal dt) override;
    void revertDynamicsImpl() override;
    void advanceDynamicsImpl(HyReal dt) override;
    void postUpdateImpl() override;

private:
    template <typename T>
    struct MemberKind;
    static const MemberKind<HyPart> kParts;
    static const MemberKind<HyConstraint> kConstraints;
    static const MemberKind<HyCollisionGeometry> kGeometries;
    static const MemberKind<HyDynamicsExtension> kExtensions;

    template <typename T>
    bool addMember(const MemberKind<T>& kind, T* member);
    template <typename T>
    T* removeMember(const MemberKind<T>& kind, T* member);
    template <typename T>
    void destroyMembers(const MemberKind<T>& kind);
    template <typename T>
    bool tellObservers(void (HyUniverseObserver::*call)(T*), T* member);
    template <typename T>
    void tellOfContents(HyUniverseObserver& observer, const MemberKind<T>& kind,
                        void (HyUniverseObserver::*call)(T*));

    void tellOfAllContents(HyUniverseObserver& observer, bool added);

    void init(unsigned maxCollisionGeometries, unsigned maxCollisionPairs);
    void initResponses();
    void stepCollisionRules();
    void applyCollisionRules(const std::vector<HyCollisionGeometry*>& geometries, bool all);
    [[nodiscard]] bool hasResponsePair(int id1, int id2, const char* operation) const;
    template <typename Stage>
    void measure(HyReal& milliseconds, const char* name, Stage stage);
    void preStepParts();
    void postStepParts();
    void callExtensions(void (HyDynamicsExtension::*hook)(), HyReal& milliseconds,
                        const char* name);
    void saveLockTargets();
    void restoreLockTargets();
    void resetConstraintDynamics();
    void warnIfStepping(const char* operation) const;

    Parts mParts;
    Parts mPreStepParts; ///< have asked to be called at the start of the next step
    Parts mSteppedParts; ///< were called at the start of this step
    HyCallbackList<HyUniverseObserver> mObservers;
    HyCallbackList<UpdateSubscriber> mUpdateSubscriberList;
    Constraints mConstraints;
    CollisionGeometries mCollisionGeometries;
    Extensions mExtensions;
    HyEnabledListVisits<DynBody, HyPart> mPartVisits;
    HyEnabledListVisits<DynBaseConstraint, HyConstraint> mConstraintVisits;
    HyEnabledListVisits<DynBaseConstraint, HyDynamicsContact> mContactVisits;
    std::unique_ptr<HySavedCoordinates> mSavedCoordinates; ///< as the present step began
    std::unique_ptr<HyCollisionRuleStore> mCollisionRules;
    std::unique_ptr<HyCollisionRuleStore> mCollisionRulesChanged; ///< since the last detection
    std::unique_ptr<HyMaterialTable> mOwnMaterialTable;
    HyMaterialTable* mMaterialTable = nullptr; ///< the own one or a shared one
    DynWorld* mWorld = nullptr;
    CxSpace* mSpace = nullptr;
    std::unique_ptr<HyBridge> mBridge;
    std::unique_ptr<HyUserContacts> mUserContacts;
    HyTimer mTimer;
    UniverseTimings mUniverseTimings;
    unsigned mCollisionGeometriesMaxCount = 0;
    unsigned mCollisionRulesNextID;
    int mGlobalCouplingSolverGroup = -1;
    bool mStepping = false;
    bool mBroadPhaseMultithreaded = false;
    bool mFirstStep = true;
    bool mCollisionRulesSuspended = false;
    bool mCollisionRulesReset = true;
    bool mCollisionGeometriesDirty = false;
};

} // namespace Hy
