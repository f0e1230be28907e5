#pragma once

#include <model/KvPlanNodeResponse.h>
#include <model/KvPlanStatistics.h>

/// The endpoints of both services for progress, statistics and rights, one function each; rules as for the
/// plan endpoints.
namespace Kv {

/// GET planNodes/%1/responses?order=createdAt&expand=true. The node's responses, oldest first and with their
/// documents, are added to @p responses.
bool requestPlanNodeResponses(const QString& planNodeId, QList<KvPlanNodeResponse>& responses);

/// POST planNodes/%1/responses. The reply is read into @p response, its documents added to those there.
bool requestCreatePlanNodeResponse(const QString& planNodeId, KvPlanNodeResponse& response);

/// GET projects/%1/planNodes_statistics, by status and situation, of the user's tasks in the current project
/// and in @p category, or in all when it is empty. @p statistics is replaced in any case.
bool requestPlanNodeStatistics(const QString& category, KvPlanStatistics& statistics);

/// GET projects/%1/planNodes_quantities_statistics. The counts of the user's tasks by @p period, a word of
/// the service, are added to @p quantities; an empty @p category is sent as well.
bool requestPlanNodeQuantities(QList<KvStatisticsQuantity>& quantities, const QString& category,
                               const QString& period);

/// GET projects/%1/auth. What the user may do in the module "plan" by @p key, a word of the service; @p value
/// is empty when the reply holds none.
bool requestAuthValue(const QString& category, const QString& key, QString& value);

/// GET projects/%1/taskstates?where=…, of the state service, for an empty list of plans too. @p states is
/// replaced in any case.
bool requestMeteringStates(const QStringList& planIds, QList<KvMeteringState>& states);

/// POST taskstates, of the state service. The state code is not sent: only an update sets it. The reply is
/// read into @p state.
bool requestCreateMeteringState(KvMeteringState& state);

/// PUT tasks/%1/taskstates, of the state service, with the task's id and its state code. The reply is read
/// into @p state.
bool requestUpdateMeteringState(KvMeteringState& state);

} // namespace Kv
