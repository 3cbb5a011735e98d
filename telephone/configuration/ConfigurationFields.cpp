#include "telephone/configuration/ConfigurationFields.h"

#include <spdlog/fmt/fmt.h>

#include "telephone/configuration/Choices.h"

namespace telephone {

namespace {

struct Expectation
{
    std::string_view choices;
    int minimum;
    int maximum;

    template <typename Section>
    std::string operator()(bool Section::*) const
    {
        return "true or false";
    }
    template <typename Section>
    std::string operator()(int Section::*) const
    {
        return choices.empty() ? fmt::format("an integer from {} to {}", minimum, maximum) : listOfChoices(choices);
    }
    template <typename Section>
    std::string operator()(std::string Section::*) const
    {
        return choices.empty() ? "a text" : listOfChoices(choices);
    }
    template <typename Section>
    std::string operator()(std::vector<std::string> Section::*) const
    {
        return "an array of texts";
    }
    template <typename Section>
    std::string operator()(Transport Section::*) const
    {
        return listOfChoices(choices);
    }
};

}  // namespace

template <typename Section>
std::string expectedOf(ConfigurationField<Section> const& field)
{
    return std::visit(Expectation{field.choices, field.minimum, field.maximum}, field.member);
}

template std::string expectedOf(ConfigurationField<Configuration> const&);
template std::string expectedOf(ConfigurationField<LineConfiguration> const&);
template std::string expectedOf(ConfigurationField<KeyConfiguration> const&);
template std::string expectedOf(ConfigurationField<SipConfiguration> const&);
template std::string expectedOf(ConfigurationField<ServerConfiguration> const&);
template std::string expectedOf(ConfigurationField<ExchangeConfiguration> const&);
template std::string expectedOf(ConfigurationField<MediaConfiguration> const&);
template std::string expectedOf(ConfigurationField<CallConfiguration> const&);
template std::string expectedOf(ConfigurationField<ApplicationSocketConfiguration> const&);
template std::string expectedOf(ConfigurationField<StoreConfiguration> const&);
template std::string expectedOf(ConfigurationField<RecordingConfiguration> const&);
template std::string expectedOf(ConfigurationField<PushConfiguration> const&);
template std::string expectedOf(ConfigurationField<LogConfiguration> const&);
template std::string expectedOf(ConfigurationField<CertificateConfiguration> const&);

}  // namespace telephone
