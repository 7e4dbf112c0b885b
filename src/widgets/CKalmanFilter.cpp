#include "widgets/CKalmanFilter.h"

#include <cmath>

#include "log/GuiLog.h"

CKalmanFilter::CKalmanFilter(float q_, float r_)
    : q(q_), r(r_), estimate(0.0f), lastEstimate(0.0f), errorCovariance(0.0f)
{
}

void CKalmanFilter::addMeasurment(float z)
{
    // One bad sample would poison every later estimate.
    if (!std::isfinite(z)) {
        guiLog(2, "CKalmanFilter::addMeasurment ignoring non-finite measurement");
        return;
    }
    const float p = errorCovariance + q;
    const float s = p + r;
    // Without any noise the measurement is the truth.
    const float k = (s != 0.0f) ? (1.0f / s) * p : 1.0f;
    const float x = lastEstimate + (z - lastEstimate) * k;
    if (!std::isfinite(x) || !std::isfinite(k)) {
        guiLog(2, "CKalmanFilter::addMeasurment ignoring measurement %g: filter would diverge",
               static_cast<double>(z));
        return;
    }
    estimate = lastEstimate = x;
    errorCovariance = (1.0f - k) * p;
}
