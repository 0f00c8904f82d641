#pragma once
#include <Hy/HyConstraint.h>
#include <Hy/HyQuaternion.h>

struct DyncGenericRows;

namespace Hy {

/// A constraint whose rows a class of the application writes.
///
/// In each step update() adds rows for the parts as they stand: J v = v0 - gamma phi / h, with a force
/// within bounds. It runs on a thread of the solver and may change nothing but the rows and its own
/// object. The rows that are added come between parts 0 and 1.
class HY_API HyGenericConstraint : public HyClass<kHyGenericConstraintClassId, HyConstraint> {
public:
    /// Rows in the making, by row: error (m, rad), wanted velocity, bounds of the force, softness.
    struct HY_API ConstraintInternalFactors {
        HyReal *phi, *v0, *lower, *upper;
        HyReal *xepsilon, *xgamma;
        HyReal (*G[6])[6]; ///< by part and row: linear, then angular part of the Jacobian
        int* flags;
        HyReal invTimeStep; ///< 1/s

        /// Turns a row into a spring with damper. Damping of the largest double leaves no softness,
        /// and nothing of the error is removed. Row or value out of range: a warning, no change.
        void setStrength(unsigned row, HyReal stiffness, HyReal damping) const;
        /// Turns a row into one of velocity alone, with a velocity loss per force.
        void setStrength(unsigned row, HyReal loss) const;
    };

    /// What update() works with. Each add operation answers the number of rows that it has added, 0
    /// with a warning where there is no room or an index is out of range. Readers of attachments and
    /// of the Jacobian take what is: parts 0 to 5, axes 0 to 2, rows 0 to 15.
    struct HY_API ConstraintInternal {
        int mPartCount;
        int mMaxRowCount;
        int mRowAdded; ///< raise it for rows that are written by hand
        const HyTransform* mWorldAttachment[6];
        const HyVector3* mWorldAttachmentPosition[6]; ///< from the part's centre of mass
        ConstraintInternalFactors mFactors;
        DynBaseConstraint* mConstraint;

        /// Attachment i in the world; its row j, its position, and that from the centre of mass.
        [[nodiscard]] const HyTransform& getAttachment(int i) const { return *mWorldAttachment[i]; }
        [[nodiscard]] const HyVector3& getAttachmentAxis(int i, int j) const {
            return getAttachment(i).axis(j);
        }
        [[nodiscard]] const HyVector3& getAttachmentPos(int i) const {
            return getAttachment(i).t();
        }
        [[nodiscard]] const HyVector3& getAttachmentPosRel(int i) const {
            return *mWorldAttachmentPosition[i];
        }
        [[nodiscard]] int getRowAdded() const { return mRowAdded; }
        [[nodiscard]] HyVector3& getJacobianLinear(int i, int row) const {
            return HyVector3::cast(getJacobianRow(i, row));
        }
        [[nodiscard]] HyVector3& getJacobianAngular(int i, int row) const {
            return HyVector3::cast(getJacobianRow(i, row) + 3);
        }
        [[nodiscard]] HyReal* getJacobianRow(int i, int row) const { return mFactors.G[i][row]; }
        /// From attachment 1 to attachment 0, along axis j of attachment i, m.
        [[nodiscard]] HyReal getLinearPosition(int i, int j) const;
        /// Angle about axis j of attachment i, with the full turns that bring it nearest a reference.
        [[nodiscard]] HyReal getAngularPosition(int i, int j, HyReal reference) const;

        /// Joins the attachment points, along the axes of attachment 0 or 1, or the world's (-1).
        int addSphericalConstraint(int reference);
        /// Position along an axis that part refBody carries.
        int addDot2Constraint(const HyVector3& axis, int refBody);
        /// The same for points that are `arm` apart, instead of the attachments.
        int addDot2Constraint(const HyVector3& axis, int refBody, const HyVector3& arm);
        /// A right angle between axis i of attachment 0 and axis j of attachment 1.
        int addDot1Constraint(int i, int j);
        /// Holds the orientation of attachment 0 in attachment 1, which may turn at a rate in rad/s.
        int addSphericalLock(const HyQuaternion& orientation, const HyVector3& rate);
        int addSphericalLock();
        /// A rotation about an axis; error and velocity are the caller's to write.
        int addAxialRow(const HyVector3& axis);
        /// Holds the attachment points a distance apart.
        int addDistanceConstraint(HyReal distance);
        /// Holds the point of one part at a distance from a line of another, an axis of its
        /// attachment.
        int addLinePointDistanceConstraint(int pointBody, int lineBody, int axis, HyReal distance);
        /// Writes the rows to the standard output.
        void printRows() const;

    private:
        friend class HyGenericConstraint;
        [[nodiscard]] bool hasRoom(int rows, const char* operation) const;

        const DyncGenericRows* mRows;
    };

    /// @param partCount slots, 1 to 6
    /// @param maxRows most rows of a step, friction included, 1 to 16
    HyGenericConstraint(int partCount, int maxRows);
    ~HyGenericConstraint() override;
    [[nodiscard]] const char* getClassName() const override { return "HyGenericConstraint"; }

    /// Adds the rows of a step.
    virtual void update(ConstraintInternal*) {}
    /// Moves what moves by itself, before the solve of a step of h seconds, which may be negative.
    virtual void updateKinematic(HyReal) {}
    /// The constraint was reset or brought to another state.
    virtual void resetKinematic() {}

    /// Names the next row of update() as an equation, so that it can be relaxed and read. Answers its
    /// index; beyond the largest number of rows: a warning, -1.
    /// @param name copied
    int addConstraintEquationDefinition(const char* name);
    [[nodiscard]] int getMaxRowCount() const;
    /// Orientation of attachment 0 in attachment 1.
    void getAttachmentRelativeQuaternion(HyQuaternion& out) const;

protected:
    void _reset() override;
    void restoreStateImpl(const HyConstraintState& state) override;

private:
    static int writeRows(DyncGenericRows* rows, void* object);
    void connectRecord();
};

} // namespace Hy
