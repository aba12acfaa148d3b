#pragma once

#include <memory>
#include <vector>

#include "context/SxContext.h"
#include "model/Parameter.h"
#include "model/Vocabulary.h"
#include "protocol/SettingsTable.h"

namespace vessa {

// Maps the clients' integer parameter ids (100 to 116) onto the context: which
// Parameter an id stands for, at which level of the profile it lives, its range
// and its number of values.
class ParameterAdapter {
  public:
    class ParameterStrategy {
      public:
        ParameterStrategy(int min, int max, Parameter parameter, int length);
        virtual ~ParameterStrategy();
        virtual void setParameter(SxContext* context, int profileId, std::vector<int>& values) = 0;
        virtual void setParameter(SxContext* context, int profileId, Endpoint endpoint,
                                  std::vector<int>& values);
        virtual std::vector<int> getParameter(SxContext* context, int profileId) = 0;
        virtual std::vector<int> getParameter(SxContext* context, int profileId, Endpoint endpoint);
        virtual Parameter getParameter() const { return mParameter; }
        virtual int getParamLength() const { return mLength; }

      protected:
        // Brings every value into [min, max], in the caller's vector.
        void clamp(std::vector<int>& values) const;

        int mMin;
        int mMax;
        Parameter mParameter;
        int mLength;
    };

    // A profile-wide parameter of the profile record.
    class ProfileParameterStrategy : public ParameterStrategy {
      public:
        using ParameterStrategy::getParameter;
        using ParameterStrategy::ParameterStrategy;
        using ParameterStrategy::setParameter;
        void setParameter(SxContext* context, int profileId, std::vector<int>& values) override;
        std::vector<int> getParameter(SxContext* context, int profileId) override;
    };

    // A per-endpoint parameter: the plain forms write all three endpoints and
    // read the speaker's; the endpoint forms address one endpoint.
    class ProfileEndpointParameterStrategy : public ParameterStrategy {
      public:
        using ParameterStrategy::getParameter;
        using ParameterStrategy::ParameterStrategy;
        void setParameter(SxContext* context, int profileId, std::vector<int>& values) override;
        void setParameter(SxContext* context, int profileId, Endpoint endpoint,
                          std::vector<int>& values) override;
        std::vector<int> getParameter(SxContext* context, int profileId) override;
        std::vector<int> getParameter(SxContext* context, int profileId,
                                      Endpoint endpoint) override;
    };

    // A parameter of the profile's GEQ preset.
    class ProfileGeqParameterStrategy : public ParameterStrategy {
      public:
        using ParameterStrategy::getParameter;
        using ParameterStrategy::ParameterStrategy;
        using ParameterStrategy::setParameter;
        void setParameter(SxContext* context, int profileId, std::vector<int>& values) override;
        std::vector<int> getParameter(SxContext* context, int profileId) override;
    };

    // The virtualizer switch of one fixed endpoint. Its values are written
    // unclamped, unlike every other strategy's.
    class VirtualizerStrategy : public ParameterStrategy {
      public:
        VirtualizerStrategy(int min, int max, Parameter parameter, int length, Endpoint endpoint,
                            int mode);
        using ParameterStrategy::getParameter;
        using ParameterStrategy::setParameter;
        void setParameter(SxContext* context, int profileId, std::vector<int>& values) override;
        std::vector<int> getParameter(SxContext* context, int profileId) override;

      private:
        Endpoint mEndpoint;
        [[maybe_unused]] int mMode;  // kept from the construction table; no operation reads it
    };

    static constexpr int kFirstId = SettingsTable::kBaseId;

    explicit ParameterAdapter(SxContext* context);
    ~ParameterAdapter();
    ParameterAdapter(const ParameterAdapter&) = delete;
    ParameterAdapter& operator=(const ParameterAdapter&) = delete;

    int getParameterLength(int id);
    // The Parameter an id stands for; false, silently, for an id without one.
    bool findParameter(int id, Parameter* parameter) const;
    void setParameter(int profileId, int id, std::vector<int>& values);
    std::vector<int> getParameter(int profileId, int id);
    void setProfileEndpointParameter(int profileId, Endpoint endpoint, int id,
                                     std::vector<int>& values);
    std::vector<int> getProfileEndpointParameter(int profileId, Endpoint endpoint, int id);

  private:
    // The strategy of an id, or null; `pastEnd` tells an id beyond the table
    // from an unsupported one inside it.
    ParameterStrategy* lookup(int id, bool* pastEnd) const;
    // Logs the "not supported" line and returns null for either kind of miss.
    ParameterStrategy* lookupOrLog(int id) const;
    // Null for either kind of miss, but logs only for an unsupported id.
    ParameterStrategy* lookupForWrite(int id) const;

    SxContext* mContext;
    // Indexed by id - kFirstId; a null entry is an unsupported id.
    std::vector<std::unique_ptr<ParameterStrategy>> mStrategies;
};

}  // namespace vessa
