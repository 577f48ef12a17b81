// One domain: what it loads, its comment, and its reset before a new run.
#include "domains/domaine.h"

#include "moxel/enumerations.h"
#include "tests/domains/domain_test.h"

namespace moxel::test {
namespace {

class DomaineTest : public ScenarioTest {};

TEST_F(DomaineTest, ItsScenariosAreThoseThatNameItExactly) {
  Configure(R"(
      Scenarios\A   Domain=D  Dir=C:\A  Traitement=dword:1  Etat=2  UseSock=dword:1  SockNum=5001  Date Traitement=today
      Scenarios\B   Domain=D  Traitement=x  Etat=x  UseSock=1  SockNum=dword:5002
      Scenarios\C   Domain=d
      Scenarios\E   Domain=dword:1
      Scenarios\F   Dir=F
      Scenarios\H   Domain=DD)");
  std::string shown;
  const ObjectPtr<Scenarios> scenarios = DomainNamed("D")->Scenarios();
  for (std::int32_t i = 1; i <= scenarios->Count(); ++i) {
    const ObjectPtr<Scenario> s = scenarios->Item(i);
    shown += Narrow(s->key) + Shown(s->Directory()) + std::to_string(s->Mode()) +
             std::to_string(s->UseSocket()) + Shown(s->Port()) + Shown(s->LastExe()) + " ";
  }
  EXPECT_EQ(shown, "A'C:\\A'11'5001''today' B''01I4 5002'' ");
  EXPECT_EQ(KeysOf(*DomainNamed("d")->Scenarios()), "C");
  EXPECT_EQ(KeysOf(*DomainNamed("1")->Scenarios()), "") << "a number never equals a text";
  EXPECT_EQ(KeysOf(*DomainNamed("")->Scenarios()), "F");
}

TEST_F(DomaineTest, CollectionsAreLoadedOnceUnlessPut) {
  EXPECT_EQ(DomainNamed("D")->Variables()->Count() + DomainNamed("D")->Scenarios()->Count(), 0);
  EXPECT_FALSE(Exists("")) << "reading creates nothing";
  const ObjectPtr<Domaine> domain = DomainNamed("D");
  auto seen = [&] { return KeysOf(*domain->Variables()) + "/" + KeysOf(*domain->Scenarios()); };
  Configure("Domain\\D\\Var\\x  Scenarios\\S  Domain=D");
  EXPECT_EQ(seen(), "x/S");
  const ObjectPtr<Variables> variables = domain->Variables();
  Configure("Domain\\D\\Var\\y  Scenarios\\T  Domain=D");
  EXPECT_EQ(seen(), "x/S");
  domain->PutVariables(Variables::Create().get());
  domain->PutScenarios(Scenarios::Create().get());
  EXPECT_EQ(seen(), "/");
  domain->PutVariables(nullptr);
  domain->PutScenarios(nullptr);
  EXPECT_EQ(seen(), "x y/S T");
  EXPECT_EQ(KeysOf(*variables), "x") << "the old collection stays as it is";
}

// A domain after a run, with all that a reset brings to 0; Z belongs to another domain.
constexpr const char* kAfterRun = R"(
    Domain\D             Admin=dword:3
    Domain\D\Var\a       V/C=V  Type=1  Value=dword:3  Init=0
    Domain\D\Var\b       V/C=V  Type=1  Value=dword:3  Init=0
    Domain\D\Var\c       V/C=C  Type=1  Value=dword:3  Init=0
    Scenarios\A          Domain=D  Etat=dword:3  Admin=dword:3
    Scenarios\A\Var\X    V/C=V  Type=1  Value=dword:3  Init=0
    Scenarios\B          Domain=D  Etat=dword:3  Admin=dword:3
    Scenarios\C          Domain=D  Etat=dword:3  Admin=dword:3
    Scenarios\Z          Domain=d  Etat=dword:3  Admin=dword:3)";

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
TEST_F(DomaineTest, ScenariosThenVariablesAreResetUpToTheFirstFailure) {
  const Failure none, variable{MXVariableError_InitializationFail, u"Variable:Initialize"};
  const struct {
    std::int16_t domain_flag, scenario_flag;
    const char* fault;
    Failure failure;
    const char* numbers;
  } cases[] = {
      {1, 1, "", none, "0 0 0 3 00 0 00 00 33"},
      {1, 0, "", none, "0 0 0 3 00 3 00 00 33"},
      {0, 1, "", none, "0 3 3 3 00 0 00 00 33"},
      {2, -1, "", none, "0 3 3 3 00 3 00 00 33"},
      {1, 1, "Scenarios\\B\\Ordre  tsk1=gone", Runtime(5), "0 3 3 3 00 0 30 33 33"},
      {1, 1, "Scenarios\\B\\Var\\X  V/C=V  Type=1  Init=1e10", variable, "0 3 3 3 00 0 00 33 33"},
      {1, 1, "Domain\\D\\Var\\b  Init=1e10", variable, "0 0 3 3 00 0 00 00 33"},
  };
  for (const auto& c : cases) {
    TempFolder folder;
    ::setenv("MOXEL_REGISTRY", (folder.path() / "registry.db").c_str(), 1);
    Configure(kAfterRun);
    Configure(c.fault);
    EXPECT_EQ(FailureOf([&] { DomainNamed("D")->Initialize(c.domain_flag, c.scenario_flag); }), c.failure);
    EXPECT_EQ(Numbers(), c.numbers) << c.domain_flag << " " << c.scenario_flag << " " << c.fault;
  }
}

TEST_F(DomaineTest, CountersAreSixteenBit) {
  Configure(kAfterRun);
  const ObjectPtr<Domaine> domain = DomainNamed("D");
  domain->PutScenarios(Numbered<Scenario, Scenarios>(kTooMany).get());
  EXPECT_EQ(FailureOf([&] { domain->Initialize(1, 1); }), Runtime(6));
  EXPECT_EQ(Numbers(), "0 3 3 3 33 3 33 33 33") << "none of them is reset";
  domain->PutScenarios(nullptr);
  domain->PutVariables(Numbered<Variable, Variables>(kTooMany).get());
  EXPECT_EQ(FailureOf([&] { domain->Initialize(1, 0); }), Runtime(6));
  EXPECT_EQ(Numbers(), "0 3 3 3 00 3 00 00 33") << "the scenarios come first";
  EXPECT_EQ(domain->Initialize(0, 0), VARIANT_TRUE) << "variables that are not reset are not counted";
}

TEST_F(DomaineTest, CommentsAreWrittenAsTextAndKeptAsGiven) {
  const struct {
    Variant comment;
    Failure failure;
    const char *kept, *written;
  } cases[] = {
      {u"Orders", {}, "'Orders'", "Orders"},
      {{}, {}, "empty", ""},
      {1e15, {}, "R8 1000000000000000", "1E+15"},
      {Variant::Null(), Runtime(94), "'old'", "old"},
      {Variant::Missing(), Runtime(13), "'old'", "old"},
  };
  for (const auto& c : cases) {
    Configure("Domain\\D  Comment=old");
    const ObjectPtr<Domaine> domain = DomainNamed("D");
    domain->SetComment(u"old");
    EXPECT_EQ(FailureOf([&] { domain->Update(c.comment); }), c.failure);
    EXPECT_EQ(Shown(domain->Comment()), c.kept);
    EXPECT_EQ(ConfigurationAt("Domain\\D"), Tidy("Domain\\D  Comment=" + std::string(c.written)));
  }
}

}  // namespace
}  // namespace moxel::test
