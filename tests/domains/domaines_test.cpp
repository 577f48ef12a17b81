// The collection of domains: creation, refusals and deletion.
#include "domains/domaines.h"

#include "moxel/enumerations.h"
#include "tests/domains/domain_test.h"

namespace moxel::test {
namespace {

class DomainesTest : public ScenarioTest {
 protected:
  const ObjectPtr<Domaines> domains_ = Domaines::Create();
};

const Failure kContainsElements{MXDomainError_ContainElement, u"Domaines:DeleteDomain"};

TEST_F(DomainesTest, ANewDomainIsWrittenUnlessTheRegistryHasIt) {
  const Failure required{MXDomainError_DomainRequired, u"Domaines:NewDomain"};
  const Failure exists{MXDomainError_DomainAlreadyExist, u"Domaine:Validate"};
  const struct {
    const char16_t* name;
    Variant comment;
    Failure failure;
  } cases[] = {
      {u"", Variant::Null(), required},
      {u"oLD", Variant::Null(), exists},
      {u"Old\\", u"c", exists},
      {u"New", Variant::Null(), Runtime(94)},
      {u"New", Variant::Missing(), Runtime(13)},
      {u" ", {}, {}},
      {u"New", u"Orders", {}},
      {u"Old\\North", std::int16_t{7}, {}},
      {u"HELD", u"c", Runtime(457)},
  };
  Configure("Domain\\Old  Comment=old");
  domains_->Add(*DomainNamed("Held"));
  for (const auto& c : cases)
    EXPECT_EQ(FailureOf([&] { domains_->NewDomain(c.name, c.comment); }), c.failure) << Narrow(c.name);
  EXPECT_EQ(ConfigurationAt("Domain"),
            "Domain\nDomain\\   Comment=\nDomain\\HELD  Comment=c\nDomain\\New  Comment=Orders\n"
            "Domain\\Old  Comment=old\nDomain\\Old\\North  Comment=7\n")
      << "a name that only the collection has is written before it is refused";
  EXPECT_EQ(KeysOf(*domains_), "Held   New Old\\North");
  EXPECT_EQ(Shown(domains_->Item(u"old\\NORTH")->Comment()), "I2 7") << "the comment is kept as given";
}

constexpr const char* kDomains = R"(
    Domain\D\Var\x       Value=1
    Domain\E             Comment=e
    Scenarios\A\Taches\T Etat=dword:1
    Scenarios\A          Domain=D
    Scenarios\B          Domain=D
    Scenarios\C          Domain=E
    Scenarios\Z)";

// Which of the domains D to V and the scenarios A to Z are left.
std::string Left() {
  std::string left;
  for (const char* domain : {"D", "E", "F", "V"})
    if (Exists(std::string("Domain\\") + domain)) left += domain;
  for (const char* scenario : {"A", "B", "C", "Z", "1"})
    if (Exists(std::string("Scenarios\\") + scenario)) left += scenario;
  return left;
}

// A domain that was deleted stays in the collection, one that was not there leaves it.
TEST_F(DomainesTest, OnlyADomainWithoutElementsIsDeletedUnforced) {
  const struct {
    const char* name;
    std::int16_t force;
    Failure failure;
    Status deleted;
    const char *left, *held;
  } cases[] = {
      {"D", 0, kContainsElements, 0, "DEFVABCZ", "D E F V gone"},
      {"V", 0, kContainsElements, 0, "DEFVABCZ", "D E F V gone"},
      {"E", 0, kContainsElements, 0, "DEFVABCZ", "D E F V gone"},
      {"F", 0, {}, VARIANT_TRUE, "DEVABCZ", "D E F V gone"},
      {"D", -1, {}, VARIANT_TRUE, "EFVCZ", "D E F V gone"},
      {"E", 2, {}, VARIANT_TRUE, "DFVABZ", "D E F V gone"},
      {"gone", 0, {}, VARIANT_FALSE, "DEFVABCZ", "D E F V"},
      {"gone", 1, {}, VARIANT_FALSE, "DEFVABCZ", "D E F V"},
  };
  for (const auto& c : cases) {
    Configure(kDomains);
    Configure("Domain\\F  Domain\\V\\Var\\x");
    const ObjectPtr<Domaines> domains = Domaines::Create();
    for (const char* name : {"D", "E", "F", "V", "gone"}) domains->Add(*DomainNamed(name));
    Status deleted = 0;
    EXPECT_EQ(FailureOf([&] { deleted = domains->DeleteDomain(*domains->Item(Wide(c.name)), c.force); }),
              c.failure);
    EXPECT_EQ(deleted, c.deleted) << c.name;
    EXPECT_EQ(Left(), c.left) << c.name << " " << c.force;
    EXPECT_EQ(KeysOf(*domains), c.held) << c.name << " " << c.force;
  }
}

TEST_F(DomainesTest, WhatTheCollectionDoesNotHoldCanOnlyBeDeletedWithSuccess) {
  Configure(kDomains);
  EXPECT_EQ(domains_->DeleteDomain(*DomainNamed("D"), 1), VARIANT_TRUE);
  EXPECT_EQ(FailureOf([&] { domains_->DeleteDomain(*DomainNamed("D"), 1); }), Runtime(5));
  EXPECT_EQ(Left(), "ECZ");
}

TEST_F(DomainesTest, TheDomainsOwnCollectionsDecide) {
  Configure(kDomains);
  const ObjectPtr<Domaine> domain = DomainNamed("D");
  domain->PutVariables(Variables::Create().get());
  domain->PutScenarios(Scenarios::Create().get());
  EXPECT_EQ(domains_->DeleteDomain(*domain, 0), VARIANT_TRUE);
  EXPECT_EQ(Left(), "EABCZ");

  Configure(kDomains);
  for (const char* name : {"A", "never there", "Z"}) domain->Scenarios()->Add(*ScenarioNamed(name));
  EXPECT_EQ(domains_->DeleteDomain(*domain, 1), VARIANT_TRUE);
  EXPECT_EQ(Left(), "EBC");
  EXPECT_EQ(KeysOf(*domain->Scenarios()), "A never there Z") << "the objects in memory stay";

  Configure("Domain\\D  Scenarios\\1");
  domain->PutScenarios(Numbered<Scenario, Scenarios>(kTooMany).get());
  EXPECT_EQ(FailureOf([&] { domains_->DeleteDomain(*domain, 0); }), kContainsElements);
  EXPECT_EQ(FailureOf([&] { domains_->DeleteDomain(*domain, 1); }), Runtime(6));
  EXPECT_EQ(Left(), "DEBC1") << "too many are refused before the first is deleted";
}

}  // namespace
}  // namespace moxel::test
