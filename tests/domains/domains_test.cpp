// Domains: what one loads, its comment and its reset before a new run; creation, refusals and deletion.
#include "domains/domaines.h"
#include "moxel/enumerations.h"
#include "tests/scenarios/scenario_test.h"

namespace moxel::test {
namespace {

ObjectPtr<Domaine> DomainNamed(std::string_view name) { return Keyed<Domaine>(Wide(name)); }

// One more than a 16-bit counter holds, named "1", "2", ...
ObjectPtr<Scenarios> TooManyScenarios() {
  ObjectPtr<Scenarios> scenarios = Scenarios::Create();
  for (int i = 1; i <= 32768; ++i) scenarios->Add(*ScenarioNamed(std::to_string(i)));
  return scenarios;
}

class DomainsTest : public ScenarioTest {
 protected:
  const ObjectPtr<Domaines> domains_ = Domaines::Create();
  const ObjectPtr<Domaine> domain_ = DomainNamed("D");
};

const Failure kContainsElements{MXDomainError_ContainElement, u"Domaines:DeleteDomain"};

TEST_F(DomainsTest, ItsScenariosAreThoseThatNameItExactly) {
  Configure(R"(
      Scenarios\A  Domain=D  Scenarios\B  Domain=D  Traitement=x  Etat=x  UseSock=1  SockNum=dword:5002
      Scenarios\C  Domain=d  Scenarios\E  Domain=dword:1  Scenarios\F  Dir=F  Scenarios\H  Domain=DD)");
  EXPECT_EQ(KeysOf(*domain_->Scenarios()), "A B");
  EXPECT_EQ(KeysOf(*DomainNamed("d")->Scenarios()), "C");
  EXPECT_EQ(KeysOf(*DomainNamed("1")->Scenarios()), "") << "a number never equals a text";
  EXPECT_EQ(KeysOf(*DomainNamed("")->Scenarios()), "F");
  const ObjectPtr<Scenario> b = domain_->Scenarios()->Item(u"B");
  EXPECT_EQ(Shown(b->Directory()) + Shown(b->Port()) + Shown(b->LastExe()), "''I4 5002''");
  EXPECT_EQ(b->Mode(), 0) << "what is no number is left out";
  EXPECT_EQ(b->UseSocket(), 1);
}

TEST_F(DomainsTest, CollectionsAreLoadedOnceUnlessPut) {
  auto seen = [&] { return KeysOf(*domain_->Variables()) + "/" + KeysOf(*domain_->Scenarios()); };
  EXPECT_EQ(seen(), "/");
  EXPECT_FALSE(Exists("")) << "reading creates nothing";
  const ObjectPtr<Variables> variables = domain_->Variables();
  Configure("Domain\\D\\Var\\x  Domain\\D\\Var\\y  Scenarios\\S  Domain=D");
  EXPECT_EQ(seen(), "/");
  domain_->PutVariables(nullptr);
  domain_->PutScenarios(nullptr);
  EXPECT_EQ(seen(), "x y/S");
  EXPECT_EQ(variables->Count(), 0) << "the old collection stays as it is";
  domain_->PutVariables(variables.get());
  EXPECT_EQ(seen(), "/S");
}

// A domain after a run, with all that a reset brings to 0; Z belongs to another domain.
constexpr const char* kAfterRun = R"(
    Domain\D  Admin=dword:3  Domain\D\Var\a  V/C=V  Type=1  Value=dword:3  Init=0
    Domain\D\Var\b  V/C=V  Type=1  Value=dword:3  Init=0  Domain\D\Var\c  V/C=C  Type=1  Value=dword:3  Init=0
    Scenarios\A  Domain=D  Etat=dword:3  Admin=dword:3  Scenarios\B  Domain=D  Etat=dword:3  Admin=dword:3
    Scenarios\A\Var\X  V/C=V  Type=1  Value=dword:3  Init=0
    Scenarios\C  Domain=D  Etat=dword:3  Admin=dword:3  Scenarios\Z  Domain=d  Etat=dword:3  Admin=dword:3)";

// The numbers of the domains and the scenarios, those of a key together.
std::string Numbers() {
  std::string numbers;
  for (const std::string& token : TokensOf(ConfigurationAt("Domain") + ConfigurationAt("Scenarios"))) {
    if (IsKey(token) && !numbers.empty() && numbers.back() != ' ') numbers += ' ';
    if (token.find("=dword:") != token.npos) numbers += token.back();
  }
  return numbers;
}

// The first that fails ends it: what came before stays reset, what comes after is left alone.
TEST_F(DomainsTest, ScenariosThenVariablesAreResetUpToTheFirstFailure) {
  const Failure variable{MXVariableError_InitializationFail, u"Variable:Initialize"};
  auto reset = [](std::int16_t domain_flag, std::int16_t scenario_flag, const char* fault, Failure failure) {
    TempFolder folder;
    ::setenv("MOXEL_REGISTRY", (folder.path() / "registry.db").c_str(), 1);
    Configure(kAfterRun);
    Configure(fault);
    EXPECT_EQ(FailureOf([&] { DomainNamed("D")->Initialize(domain_flag, scenario_flag); }), failure);
    return Numbers();
  };
  EXPECT_EQ(reset(1, 1, "", {}), "0 0 0 3 00 0 00 00 33");
  EXPECT_EQ(reset(1, 0, "", {}), "0 0 0 3 00 3 00 00 33");
  EXPECT_EQ(reset(0, 1, "", {}), "0 3 3 3 00 0 00 00 33");
  EXPECT_EQ(reset(2, -1, "", {}), "0 3 3 3 00 3 00 00 33") << "exactly 1 asks for it";
  EXPECT_EQ(reset(1, 1, "Scenarios\\B\\Ordre  tsk1=gone", Runtime(5)), "0 3 3 3 00 0 33 33 33");
  EXPECT_EQ(reset(1, 1, "Scenarios\\B\\Var\\X  V/C=V  Type=1  Init=1e10", variable), "0 3 3 3 00 0 00 33 33");
  EXPECT_EQ(reset(1, 1, "Domain\\D\\Var\\b  Init=1e10", variable), "0 0 3 3 00 0 00 00 33");
}

TEST_F(DomainsTest, TooManyScenariosAreRefusedBeforeTheFirst) {
  Configure(kAfterRun);
  Configure("Scenarios\\1");
  domain_->PutScenarios(TooManyScenarios().get());
  EXPECT_EQ(FailureOf([&] { domain_->Initialize(1, 1); }), Runtime(6));
  EXPECT_EQ(Numbers(), "0 3 3 3 33 3 33 33 33");
  EXPECT_EQ(FailureOf([&] { domains_->DeleteDomain(*domain_, 0); }), kContainsElements);
  EXPECT_EQ(FailureOf([&] { domains_->DeleteDomain(*domain_, 1); }), Runtime(6));
  EXPECT_TRUE(Exists("Domain\\D") && Exists("Scenarios\\1"));
}

TEST_F(DomainsTest, CommentsAreWrittenAsTextAndKeptAsGiven) {
  domain_->Update(1e15);
  for (const Variant& comment : {Variant::Null(), Variant::Missing()})
    EXPECT_NE(FailureOf([&] { domain_->Update(comment); }), Failure{});
  EXPECT_EQ(Shown(domain_->Comment()), "R8 1000000000000000");
  EXPECT_EQ(ConfigurationAt("Domain\\D"), Tidy("Domain\\D  Comment=1E+15"));
}

TEST_F(DomainsTest, ANewDomainIsWrittenUnlessTheRegistryHasIt) {
  const Failure exists{MXDomainError_DomainAlreadyExist, u"Domaine:Validate"};
  Configure("Domain\\Old  Comment=old");
  domains_->Add(*DomainNamed("Held"));
  auto creating = [&](const char16_t* name, const Variant& comment) {
    return FailureOf([&] { domains_->NewDomain(name, comment); });
  };
  EXPECT_EQ(creating(u"", Variant::Null()), (Failure{MXDomainError_DomainRequired, u"Domaines:NewDomain"}));
  EXPECT_EQ(creating(u"oLD", Variant::Null()), exists);
  EXPECT_EQ(creating(u"Old\\", u"c"), exists);
  EXPECT_EQ(creating(u"New", Variant::Null()), Runtime(94));
  EXPECT_EQ(creating(u"New", Variant::Missing()), Runtime(13));
  EXPECT_EQ(ConfigurationAt("Domain"), Tidy("Domain  Domain\\Old\nComment=old"));
  EXPECT_EQ(creating(u" ", {}), Failure{});
  EXPECT_EQ(creating(u"Old\\North", std::int16_t{7}), Failure{});
  EXPECT_EQ(creating(u"HELD", u"c"), Runtime(457));
  EXPECT_EQ(ConfigurationAt("Domain"),
            "Domain\nDomain\\   Comment=\nDomain\\HELD  Comment=c\nDomain\\Old  Comment=old\n"
            "Domain\\Old\\North  Comment=7\n")
      << "a name that only the collection has is written before it is refused";
  EXPECT_EQ(KeysOf(*domains_), "Held   Old\\North");
  EXPECT_EQ(Shown(domains_->Item(u"old\\NORTH")->Comment()), "I2 7") << "the comment is kept as given";
}

constexpr const char* kDomains = R"(
    Domain\D\Var\x  Domain\E  Domain\F  Domain\V\Var\x  Scenarios\A  Domain=D  Scenarios\A\Taches\T
    Scenarios\B  Domain=D  Scenarios\C  Domain=E  Scenarios\Z)";

// Which of the domains D to V and the scenarios A to Z are left.
std::string Left() {
  std::string left;
  for (const char* domain : {"D", "E", "F", "V"})
    if (Exists(std::string("Domain\\") + domain)) left += domain;
  for (const char* scenario : {"A", "B", "C", "Z"})
    if (Exists(std::string("Scenarios\\") + scenario)) left += scenario;
  return left;
}

// A domain that was deleted stays in the collection, one that was not there leaves it.
TEST_F(DomainsTest, OnlyADomainWithoutElementsIsDeletedUnforced) {
  auto deleting = [](const char16_t* name, std::int16_t force, Failure failure = {}) {
    Configure(kDomains);
    const ObjectPtr<Domaines> domains = Domaines::Create();
    for (const char* each : {"D", "E", "F", "V", "gone"}) domains->Add(*DomainNamed(each));
    Status deleted = 0;
    EXPECT_EQ(FailureOf([&] { deleted = domains->DeleteDomain(*domains->Item(name), force); }), failure);
    return std::to_string(deleted) + " " + Left() + ": " + KeysOf(*domains);
  };
  for (const char16_t* name : {u"D", u"E", u"V"})
    EXPECT_EQ(deleting(name, 0, kContainsElements), "0 DEFVABCZ: D E F V gone");
  EXPECT_EQ(deleting(u"F", 0), "-1 DEVABCZ: D E F V gone");
  EXPECT_EQ(deleting(u"D", -1), "-1 EFVCZ: D E F V gone");
  EXPECT_EQ(deleting(u"E", 2), "-1 DFVABZ: D E F V gone");
  EXPECT_EQ(deleting(u"gone", 0), "0 DEFVABCZ: D E F V");
  EXPECT_EQ(deleting(u"gone", 1), "0 DEFVABCZ: D E F V");
}

TEST_F(DomainsTest, TheDomainsOwnCollectionsDecide) {
  Configure(kDomains);
  domain_->PutVariables(Variables::Create().get());
  domain_->PutScenarios(Scenarios::Create().get());
  EXPECT_EQ(domains_->DeleteDomain(*domain_, 0), VARIANT_TRUE);
  EXPECT_EQ(FailureOf([&] { domains_->DeleteDomain(*domain_, 0); }), Runtime(5)) << "it is not held";
  EXPECT_EQ(Left(), "EFVABCZ");
  Configure(kDomains);
  for (const char* name : {"A", "never there", "Z"}) domain_->Scenarios()->Add(*ScenarioNamed(name));
  EXPECT_EQ(domains_->DeleteDomain(*domain_, 1), VARIANT_TRUE);
  EXPECT_EQ(Left(), "EFVBC");
  EXPECT_EQ(KeysOf(*domain_->Scenarios()), "A never there Z") << "the objects in memory stay";
}

}  // namespace
}  // namespace moxel::test
