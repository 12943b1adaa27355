#include "trigger/binding.h"

#include "trigger/lexer.h"
#include "trigger/signalnames.h"

namespace VEK::Trigger {
namespace {

constexpr int MaxLeaves = 256;

bool isJoinable(Leaf const& leaf, Formula::Kind kind)
{
    if (leaf.isNumber || leaf.isCounted())
        return false;
    Leaf member = leaf;
    if (kind == Formula::Or)
        complement(member);
    return !member.isNegated;
}

class Binder
{
public:
    explicit Binder(SxCore const& core) : m_names(core) {}

    BoundTrigger run(TriggerSyntax const& syntax)
    {
        for (TriggerNode const& step : syntax.steps) {
            m_bound.steps.push_back(bind(step));
            m_bound.places.append(step.place);
        }
        return m_bound;
    }

private:
    /// Goes on behind an error: the others are told too.
    Formula bind(TriggerNode const& node)
    {
        switch (node.kind) {
        case TriggerNode::Always:
        case TriggerNode::Never:
            return Formula::constant(node.kind == TriggerNode::Always);
        case TriggerNode::Test:
            return bindTest(node);
        case TriggerNode::Not:
            return opposite(bind(node.children.front()));
        case TriggerNode::Counted:
            return bindCounted(node);
        case TriggerNode::And:
        case TriggerNode::Xor:
        case TriggerNode::Or:
            break;
        }
        std::vector<Formula> operands;
        for (TriggerNode const& child : node.children)
            operands.push_back(bind(child));
        return Formula::join(node.kind == TriggerNode::And   ? Formula::And
                             : node.kind == TriggerNode::Xor ? Formula::Xor
                                                             : Formula::Or,
                             operands);
    }

    /// Every leaf stands once in all formulas, so a negation can go into it.
    Formula opposite(Formula const& formula) { return absorbed(formula.negated()); }

    Formula absorbed(Formula const& formula)
    {
        if (formula.kind == Formula::Not && formula.children.front().kind == Formula::Variable) {
            int const variable = formula.children.front().variable;
            if (m_bound.leaves.at(variable).isCounted())
                return formula;
            complement(m_bound.leaves[variable]);
            return Formula::of(variable);
        }
        Formula result = formula;
        for (Formula& child : result.children)
            child = absorbed(child);
        return result;
    }

    Formula add(Leaf const& leaf)
    {
        if (leaf.isConstant())
            return Formula::constant(!leaf.isNegated);
        if (m_bound.leaves.size() == MaxLeaves)
            failAt(leaf.place, QStringLiteral("more tests than any core has units for"));
        m_bound.leaves.append(leaf);
        return Formula::of(m_bound.leaves.size() - 1);
    }

    Formula bindTest(TriggerNode const& node)
    {
        QStringList nets;
        bool isKnown = true;
        for (TriggerName const& name : node.test.names) {
            QString error;
            QStringList const found = m_names.resolve(name, error);
            if (found.isEmpty())
                tell({name.place.position, name.place.length, error});
            isKnown = isKnown && !found.isEmpty();
            nets += found;
        }
        try {
            if (isKnown)
                return add(leafOf(node.test, nets, node.place));
        } catch (SyntaxFailure const& failure) {
            tell(failure.error);
        }
        return Formula::constant(false);
    }

    void tell(TriggerError const& error) { m_bound.errors.append(error); }

    /// A counter belongs to one unit: what is counted must become one leaf.
    Formula bindCounted(TriggerNode const& node)
    {
        int const first = m_bound.leaves.size();
        int const errors = m_bound.errors.size();
        Formula const inner = bind(node.children.front());
        if (node.count == 1 || m_bound.errors.size() > errors)
            return inner;
        std::optional<Leaf> leaf = joined(inner);
        if (inner.kind == Formula::True || inner.kind == Formula::False)
            leaf = constantLeaf(node, inner.kind == Formula::True);
        m_bound.leaves.resize(first);
        if (!leaf) {
            tell({node.place.position, node.place.length,
                  QStringLiteral("a counter counts one test of one unit, and this takes several: "
                                 "count what one value of one port says")});
            return Formula::constant(false);
        }
        leaf->count = node.count;
        leaf->inRow = node.inRow;
        leaf->place = node.place;
        m_bound.leaves.append(*leaf);
        return Formula::of(first);
    }

    std::optional<Leaf> joined(Formula const& formula) const
    {
        if (formula.kind == Formula::Variable && !m_bound.leaves.at(formula.variable).isCounted())
            return m_bound.leaves.at(formula.variable);
        QVector<LeafGroup> const groups = groupsOf(formula, m_bound.leaves);
        if (groups.size() != 1 || (formula.kind != Formula::And && formula.kind != Formula::Or))
            return std::nullopt;
        std::optional<Leaf> sum;
        for (int leaf : groups.first().leaves) {
            Leaf const member = memberOf(groups.first(), m_bound.leaves.at(leaf));
            sum = sum ? merged(*sum, member) : member;
            if (!sum)
                return std::nullopt;
        }
        if (formula.kind == Formula::Or)
            complement(*sum);
        return sum;
    }

    /// Each n-th sample: a test that says nothing still names the nets whose unit counts.
    std::optional<Leaf> constantLeaf(TriggerNode const& node, bool value)
    {
        TriggerNode const* inner = &node.children.front();
        while (inner->kind == TriggerNode::Not || inner->kind == TriggerNode::Counted)
            inner = &inner->children.front();
        if (inner->kind != TriggerNode::Test || inner->test.names.isEmpty())
            return std::nullopt;
        QString ignored;
        Leaf leaf;
        for (TriggerName const& name : inner->test.names)
            leaf.nets += m_names.resolve(name, ignored);
        leaf.isNegated = !value;
        return leaf;
    }

    SignalNames m_names;
    BoundTrigger m_bound;
};

} // namespace

BoundTrigger bindTrigger(TriggerSyntax const& syntax, SxCore const& core)
{
    return Binder(core).run(syntax);
}

QVector<LeafGroup> groupsOf(Formula const& formula, QVector<Leaf> const& leaves)
{
    auto const leafOf = [](Formula const& child) {
        bool const isNegated = child.kind == Formula::Not;
        Formula const& inner = isNegated ? child.children.front() : child;
        return inner.kind == Formula::Variable ? inner.variable : -1;
    };
    QVector<LeafGroup> groups;
    if (leafOf(formula) >= 0)
        return {{Formula::And, {leafOf(formula)}}};
    LeafGroup together{formula.kind, {}};
    bool const joins = formula.kind == Formula::And || formula.kind == Formula::Or;
    for (Formula const& child : formula.children) {
        int const leaf = leafOf(child);
        if (leaf >= 0 && joins && isJoinable(leaves.at(leaf), formula.kind))
            together.leaves.append(leaf);
        else
            groups += groupsOf(child, leaves);
    }
    if (!together.leaves.isEmpty())
        groups.prepend(together);
    return groups;
}

Leaf memberOf(LeafGroup const& group, Leaf leaf)
{
    if (group.kind == Formula::Or)
        complement(leaf);
    return leaf;
}

} // namespace VEK::Trigger
