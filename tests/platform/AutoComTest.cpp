#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "platform/AutoCom.h"

namespace {

class IThing : public kv::IRefCounted {
public:
    virtual int GetNumber() const = 0;
};

class ISpecialThing : public IThing {};

class IOther : public kv::IRefCounted {};

// Tells what happens to it.
class Thing final : public kv::RefCounted<ISpecialThing> {
public:
    struct Record {
        int references = 1;
        int deleted = 0;
    };

    explicit Thing(Record& record) : m_record(record) {}
    ~Thing() override { ++m_record.deleted; }
    int GetNumber() const override { return 42; }
    void AddRef() override {
        ++m_record.references;
        RefCounted::AddRef();
    }
    std::int32_t Release() override {
        --m_record.references;
        return RefCounted::Release();
    }

private:
    Record& m_record;
};

using Holder = kv::auto_com<IThing>;
using SpecialHolder = kv::auto_com<ISpecialThing>;

static_assert(!std::is_convertible_v<IThing*, Holder>, "a plain pointer is never taken in silently");
static_assert(!std::is_constructible_v<Holder, IThing*>);
static_assert(std::is_convertible_v<SpecialHolder, Holder>);
static_assert(!std::is_convertible_v<Holder, SpecialHolder>);
static_assert(!std::is_convertible_v<kv::auto_com<IOther>, Holder>);
static_assert(!std::is_convertible_v<Holder, bool>, "only in conditions");
static_assert(std::is_nothrow_move_constructible_v<Holder>);

class AutoCom : public testing::Test {
protected:
    Thing::Record record;
    Holder Adopted() { return Holder::adopt(new Thing(record)); }
};

TEST_F(AutoCom, HoldsNothingAtFirst) {
    const Holder none;
    const Holder null = nullptr;
    EXPECT_FALSE(none);
    EXPECT_FALSE(null);
    EXPECT_EQ(none.get(), nullptr);
}

TEST_F(AutoCom, AdoptTakesOverTheReference) {
    {
        const Holder holder = Adopted();
        EXPECT_TRUE(holder);
        EXPECT_EQ(record.references, 1);
        EXPECT_EQ(holder->GetNumber(), 42);
        EXPECT_EQ((*holder).GetNumber(), 42);
    }
    EXPECT_EQ(record.references, 0);
    EXPECT_EQ(record.deleted, 1);
}

TEST_F(AutoCom, RetainAddsAReference) {
    auto* thing = new Thing(record);
    {
        const Holder holder = Holder::retain(thing);
        EXPECT_EQ(record.references, 2);
    }
    EXPECT_EQ(record.references, 1);
    EXPECT_EQ(record.deleted, 0);
    EXPECT_EQ(thing->Release(), 0);
    EXPECT_EQ(record.deleted, 1);
}

TEST_F(AutoCom, AdoptsAndRetainsNull) {
    EXPECT_FALSE(Holder::adopt(nullptr));
    EXPECT_FALSE(Holder::retain(nullptr));
}

TEST_F(AutoCom, ReleaseTellsTheNewCount) {
    auto* thing = new Thing(record);
    thing->AddRef();
    EXPECT_EQ(thing->Release(), 1);
    EXPECT_EQ(thing->Release(), 0);
}

TEST_F(AutoCom, ACopySharesTheObject) {
    Holder first = Adopted();
    {
        const Holder second = first; // NOLINT(performance-unnecessary-copy-initialization)
        EXPECT_EQ(second.get(), first.get());
        EXPECT_EQ(record.references, 2);
    }
    EXPECT_EQ(record.references, 1);
    const Holder empty;
    first = empty;
    EXPECT_EQ(record.deleted, 1);
}

TEST_F(AutoCom, AMovePassesTheReferenceOn) {
    Holder first = Adopted();
    Holder second = std::move(first);
    EXPECT_FALSE(first); // NOLINT(bugprone-use-after-move): empty by contract
    EXPECT_TRUE(second);
    EXPECT_EQ(record.references, 1);
    first = std::move(second);
    EXPECT_TRUE(first);
    EXPECT_EQ(record.references, 1);
    EXPECT_EQ(record.deleted, 0);
}

TEST_F(AutoCom, SurvivesAssigningItselfToItself) {
    Holder holder = Adopted();
    Holder& same = holder;
    holder = same;
    EXPECT_TRUE(holder);
    EXPECT_EQ(record.references, 1);
    holder = std::move(same);
    EXPECT_TRUE(holder);
    EXPECT_EQ(record.references, 1);
    EXPECT_EQ(record.deleted, 0);
}

TEST_F(AutoCom, AssigningReleasesWhatWasHeld) {
    Thing::Record other;
    Holder holder = Adopted();
    holder = Holder::adopt(new Thing(other));
    EXPECT_EQ(record.deleted, 1);
    EXPECT_EQ(other.references, 1);
    holder = nullptr;
    EXPECT_EQ(other.deleted, 1);
}

TEST_F(AutoCom, ResetReleasesOnce) {
    Holder holder = Adopted();
    holder.reset();
    EXPECT_FALSE(holder);
    EXPECT_EQ(record.deleted, 1);
    holder.reset();
    EXPECT_EQ(record.deleted, 1);
}

TEST_F(AutoCom, DetachGivesTheReferenceAway) {
    IThing* thing = nullptr;
    {
        Holder holder = Adopted();
        thing = holder.detach();
        EXPECT_FALSE(holder);
    }
    EXPECT_EQ(record.references, 1);
    thing->Release();
    EXPECT_EQ(record.deleted, 1);
}

TEST_F(AutoCom, ConvertsToABaseClass) {
    SpecialHolder special = SpecialHolder::adopt(new Thing(record));
    {
        const Holder base = special;
        EXPECT_EQ(base.get(), special.get());
        EXPECT_EQ(record.references, 2);
    }
    const Holder moved = std::move(special);
    EXPECT_FALSE(special); // NOLINT(bugprone-use-after-move): empty by contract
    EXPECT_EQ(record.references, 1);
}

// The object's destructor runs while its holder is empty already, so what it does to the holder is harmless.
TEST_F(AutoCom, LetsGoBeforeTheObjectIsDeleted) {
    struct Owner {
        Holder holder;
    } owner;
    class Nosy final : public kv::RefCounted<IThing> {
    public:
        explicit Nosy(Owner& watched) : m_owner(watched) {}
        ~Nosy() override {
            EXPECT_FALSE(m_owner.holder);
            m_owner.holder.reset();
        }
        int GetNumber() const override { return 0; }

    private:
        Owner& m_owner;
    };
    owner.holder = Holder::adopt(new Nosy(owner));
    owner.holder.reset();
    EXPECT_FALSE(owner.holder);
}

} // namespace
