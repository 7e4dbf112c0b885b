// The one-dimensional smoother: its first steps, convergence on a steady
// signal, and survival of hostile samples.
#include <QtTest>
#include <cmath>
#include <limits>

#include "widgets/CKalmanFilter.h"

class TestKalmanFilter : public QObject
{
    Q_OBJECT
private slots:
    void followsASteadySignal()
    {
        CKalmanFilter f(0.5f, 1.5f);
        f.addMeasurment(100.0f);
        // p = 0.5, k = 0.5 / 2.0
        QCOMPARE(f.estimate, 25.0f);
        QCOMPARE(f.lastEstimate, 25.0f);
        QCOMPARE(f.errorCovariance, 0.375f);
        f.addMeasurment(100.0f);
        const float k = (1.0f / 2.375f) * 0.875f;
        QCOMPARE(f.estimate, 25.0f + 75.0f * k);
        QCOMPARE(f.errorCovariance, (1.0f - k) * 0.875f);

        CKalmanFilter g(0.5f, 1.5f);
        float previous = 0.0f;
        int steps = 0;
        for (; std::fabs(g.estimate - 240.0f) > 0.01f && steps < 100; ++steps) {
            g.addMeasurment(240.0f);
            QVERIFY(g.estimate > previous && g.estimate <= 240.0f);
            previous = g.estimate;
        }
        QVERIFY2(steps < 30, qPrintable(QString("took %1 steps").arg(steps)));
        // The gain settles where P = (1 - K)(P + q), K = (P + q) / (P + q + r).
        const double pInf = (-0.5 + std::sqrt(0.25 + 4.0 * 0.5 * 1.5)) / 2.0;
        QVERIFY(std::fabs(g.errorCovariance - pInf) < 1e-4);
        QCOMPARE(int(g.estimate), 239);  // truncated, as the pointer uses it
    }

    void hostileSamplesLeaveTheEstimate()
    {
        CKalmanFilter f(0.5f, 1.5f);
        f.addMeasurment(10.0f);
        const float before = f.estimate;
        const float cov = f.errorCovariance;
        for (float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                          -std::numeric_limits<float>::infinity()})
            f.addMeasurment(bad);
        QCOMPARE(f.estimate, before);
        QCOMPARE(f.errorCovariance, cov);
        // Without any noise the measurement is taken as it is.
        CKalmanFilter exact(0.0f, 0.0f);
        exact.addMeasurment(7.0f);
        QCOMPARE(exact.estimate, 7.0f);
        QVERIFY(std::isfinite(exact.errorCovariance));
    }
};

QTEST_APPLESS_MAIN(TestKalmanFilter)
#include "tst_kalmanfilter.moc"
