package service;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Map;
import java.util.TreeMap;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.FutureTask;
import jdk.jfr.consumer.RecordingStream;

// The service of the end-to-end tests. Each method does what the system
// property of its name says, a list of steps: "-Dstart=ready,wait". Files go to
// the working directory. The nested classes lack something.
public final class Service {
    public static void start(Map<?, ?> properties, String[] args) throws Exception {
        run("start", properties, args);
    }

    public static void start(String[] args) {
        throw new AssertionError("the launcher prefers the other form");
    }

    public static void stop(String[] args) throws Exception {
        run("stop", Map.of(), args);
    }

    public static void stopFast(String[] args) throws Exception {
        run("stopFast", Map.of(), args);
    }

    public static final class NoStop {
        public static void start(String[] args) throws Exception {
            run("start", Map.of(), args);
        }
    }

    // Is stopped only by a stop that comes after the start has begun.
    public static final class Loop {
        private static volatile boolean running;

        public static void start(String[] args) throws InterruptedException {
            running = true;
            while (running) Thread.sleep(1);
        }

        public static void stop(String[] args) {
            running = false;
        }

        public static void stopFast(String[] args) {
            running = false;
        }
    }

    public static final class NoStart {
        public static void stop(String[] args) throws Exception {
            run("stop", Map.of(), args);
        }
    }

    public static final class NoInitialiser {
        static final int NOTHING = Integer.parseInt("no number");
    }

    private static final CountDownLatch RELEASED = new CountDownLatch(1);

    private static void run(String method, Map<?, ?> properties, String[] args) throws Exception {
        for (String step : System.getProperty(method, "").split(",")) {
            String[] words = step.split(":");
            switch (words[0]) {
                case "" -> { }
                case "report" -> write(method + ".report", report(properties, args));
                case "ready" -> write("ready", "");
                case "wait" -> RELEASED.await();
                case "release" -> RELEASED.countDown();
                case "until" -> until(words[1]);
                case "sleep" -> Thread.sleep(Long.parseLong(words[1]));
                case "throw" -> fail();
                case "exit" -> System.exit(Integer.parseInt(words[1]));
                case "halt" -> Runtime.getRuntime().halt(Integer.parseInt(words[1]));
                case "thread" -> new Thread(new FutureTask<>(() -> until(words[1]))).start();
                case "hook" -> Runtime.getRuntime().addShutdownHook(
                        new Thread(new FutureTask<>(() -> write("hook", ""))));
                case "child" -> child();
                case "notify" -> new ProcessBuilder("systemd-notify", "--ready").start().waitFor();
                case "depth" -> write("depth", Long.toString(depth()));
                case "sample" -> awaitSample();
                default -> throw new IllegalArgumentException(step);
            }
        }
    }

    // What the method was given.
    private static String report(Map<?, ?> properties, String[] args) {
        Thread thread = Thread.currentThread();
        StringBuilder text = new StringBuilder(thread.getName()).append('\n');
        if (thread.getContextClassLoader() != Service.class.getClassLoader()) text.append("alien\n");
        new TreeMap<>(properties).forEach((name, value) -> text.append(name).append(
                value instanceof Path ? " Path '" : " " + value.getClass().getSimpleName() + " '")
                .append(value).append("'\n"));
        for (String arg : args) text.append("arg ").append(arg).append('\n');
        return text.toString();
    }

    // With causes that go in a circle.
    private static void fail() {
        var cause = new IllegalArgumentException("причина");
        var failure = new IllegalStateException("не вышло 😀", cause);
        cause.initCause(failure);
        throw failure;
    }

    // Runs a process, whose end must be seen.
    private static void child() throws Exception {
        int status = new ProcessBuilder("sh", "-c", "ls -l /proc/self/fd; env; exit 42")
                .redirectOutput(Path.of("child").toFile()).start().waitFor();
        if (status != 42) throw new AssertionError(status);
    }

    // How many calls fit on the stack.
    private static long depth() {
        try {
            return 1 + depth();
        } catch (StackOverflowError expected) {
            return 0;
        }
    }

    // Is busy until the flight recorder has seen it.
    private static void awaitSample() {
        CountDownLatch seen = new CountDownLatch(1);
        try (RecordingStream recorder = new RecordingStream()) {
            recorder.enable("jdk.ExecutionSample").with("period", "10 ms");
            recorder.onEvent("jdk.ExecutionSample", sample -> seen.countDown());
            recorder.startAsync();
            while (seen.getCount() != 0) Thread.onSpinWait();
        }
    }

    // Waits for a file of the test.
    private static Void until(String file) throws InterruptedException {
        while (!Files.exists(Path.of(file))) Thread.sleep(5);
        return null;
    }

    private static Path write(String name, String content) throws Exception {
        return Files.writeString(Path.of(name), content);
    }
}
