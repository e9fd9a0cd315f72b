package launcher;

import java.io.InterruptedIOException;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.channels.ClosedByInterruptException;
import java.util.Arrays;
import java.util.Set;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicReference;

/**
 * Runs a program that was made for {@code java Program ARGUMENT...} as a service. The arguments of
 * the service are the main class and the program's own arguments.
 *
 * <p>As under {@code java}, the program lives until its main has returned and its other threads
 * have ended, daemon threads aside. To stop, it is asked by its own {@code public static void
 * stop(String[])}, if it has one. Otherwise it is ended by {@link System#exit}, as SIGTERM would
 * end it: its shutdown hooks run. With {@code -Dlauncher.adapter.interruptMillis=N} the thread of
 * its main is interrupted before that, and the program has N milliseconds to end by itself.
 */
public final class MainAdapter {
    private static final String INTERRUPT = "launcher.adapter.interruptMillis";

    /** The launcher's thread that calls the methods below start. */
    private static final String STOP_THREAD = "launcher-stop-thread";

    private static final CountDownLatch ENDED = new CountDownLatch(1);

    private static volatile Class<?> program;
    private static volatile Thread mainThread;
    private static volatile boolean interrupted;

    private MainAdapter() {}

    /**
     * Runs main, and waits for the threads that it leaves. What main throws is thrown here. Main has
     * a thread of its own, which ends when main returns: shutdown hooks may wait for that.
     */
    public static void start(String[] args) throws Throwable {
        if (args.length == 0) {
            throw new IllegalArgumentException("Expected the main class as the first argument");
        }
        Set<Thread> before = Thread.getAllStackTraces().keySet();
        Method main = findMain(args[0]);
        program = main.getDeclaringClass();
        try {
            callMain(main, withoutFirst(args));
        } catch (Throwable e) {
            if (programThread(before) != null) e.printStackTrace(); // the launcher tells only later
            throw e;
        } finally {
            awaitThreads(before);
            ENDED.countDown();
        }
    }

    /** Asks the program to end, or ends the process: see above. */
    public static void stop(String[] args) throws Throwable {
        if (callOwn("stop", args)) return;
        long millis = Long.getLong(INTERRUPT, 0);
        if (millis > 0 && interruptMain() && ENDED.await(millis, TimeUnit.MILLISECONDS)) return;
        System.exit(0);
    }

    /** The same, without an interrupt. */
    public static void stopFast(String[] args) throws Throwable {
        if (!callOwn("stopFast", args)) System.exit(0);
    }

    private static void callMain(Method main, String[] args) throws Throwable {
        AtomicReference<Throwable> thrown = new AtomicReference<>();
        Thread thread = new Thread(() -> {
            try {
                call(main, args);
            } catch (Throwable e) {
                thrown.set(e);
            }
        }, "main");
        thread.start();
        mainThread = thread;
        thread.join();
        if (thrown.get() != null && !endedByInterrupt(thrown.get())) throw thrown.get();
    }

    /** False when main does not run: nothing would notice. */
    private static boolean interruptMain() {
        Thread thread = mainThread;
        if (thread == null || !thread.isAlive()) return false;
        interrupted = true;
        thread.interrupt();
        return true;
    }

    private static boolean endedByInterrupt(Throwable thrown) {
        if (!interrupted) return false;
        for (Throwable e = thrown; e != null; e = e.getCause()) {
            if (e instanceof InterruptedException || e instanceof ClosedByInterruptException
                    || e instanceof InterruptedIOException) {
                return true;
            }
        }
        return false;
    }

    private static void awaitThreads(Set<Thread> before) throws InterruptedException {
        Thread thread = programThread(before);
        while (thread != null) {
            thread.join();
            thread = programThread(before);
        }
    }

    /** A thread of the program that keeps it alive; null when there is none. */
    private static Thread programThread(Set<Thread> before) {
        return Thread.getAllStackTraces().keySet().stream()
                .filter(thread -> !thread.isDaemon() && !before.contains(thread))
                .filter(thread -> !thread.getName().equals(STOP_THREAD))
                .findAny().orElse(null);
    }

    private static Method findMain(String className) {
        try {
            Class<?> found = Class.forName(className, false, ClassLoader.getSystemClassLoader());
            Method main = staticMethod(found, "main");
            if (main != null) return main;
        } catch (ClassNotFoundException e) {
            throw new IllegalArgumentException(
                    "Main class " + className + " is not on the class path", e);
        }
        throw new IllegalArgumentException(
                "Class " + className + " has no method public static void main(String[])");
    }

    /** Calls a method of the program; false when it has none of that name. */
    private static boolean callOwn(String name, String[] args) throws Throwable {
        Method method = program == null ? null : staticMethod(program, name);
        if (method == null) return false;
        call(method, withoutFirst(args));
        return true;
    }

    /** Null unless it is public, static, void and takes a String[]. */
    private static Method staticMethod(Class<?> type, String name) {
        try {
            Method method = type.getMethod(name, String[].class);
            if (!Modifier.isStatic(method.getModifiers())) return null;
            return method.getReturnType() == void.class ? method : null;
        } catch (NoSuchMethodException e) {
            return null;
        }
    }

    private static void call(Method method, String[] args) throws Throwable {
        method.setAccessible(true); // java does not ask for a public class either
        try {
            method.invoke(null, (Object) args);
        } catch (InvocationTargetException e) {
            throw e.getCause();
        }
    }

    private static String[] withoutFirst(String[] args) {
        return Arrays.copyOfRange(args, 1, args.length);
    }
}
