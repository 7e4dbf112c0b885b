#pragma once
#include "tgui_export.h"
// One-dimensional Kalman filter: smooths a jittery coordinate (the pointer of
// the text magnifier) without lagging far behind it.

class TGUI_EXPORT CKalmanFilter
{
public:
    CKalmanFilter(float q, float r);

    // Feeds one measurement; the smoothed value is then in estimate.
    void addMeasurment(float z);

    float q;                 // process noise
    float r;                 // measurement noise
    float estimate;
    float lastEstimate;
    float errorCovariance;
};
