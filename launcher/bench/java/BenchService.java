import java.util.concurrent.CountDownLatch;

/**
 * The service of the benchmarks, for every host that they compare. Each tells when it was entered,
 * in nanoseconds of the system's monotonic clock, which System.nanoTime() is on Linux. It returns
 * at once; with the system property "bench.waits" set it waits until it is stopped.
 */
public class BenchService {
    private static final CountDownLatch stopped = new CountDownLatch(1);

    public static void start(String[] args) throws InterruptedException {
        enter(System.nanoTime());
        if (System.getProperty("bench.waits") != null) stopped.await();
    }

    public static void stop(String[] args) {
        stopped.countDown();
    }

    /** For the java command. */
    public static void main(String[] args) throws InterruptedException {
        start(args);
    }

    // For jsvc, which calls init, start, stop and destroy of an object.

    public void init(String[] args) {
        enter(System.nanoTime());
    }

    public void start() {}

    public void stop() {}

    public void destroy() {}

    static void enter(long nanos) {
        System.out.println("entered " + nanos);
    }
}
