package hello;

import com.sun.net.httpserver.HttpExchange;
import com.sun.net.httpserver.HttpServer;
import java.io.IOException;
import java.net.InetAddress;
import java.net.InetSocketAddress;
import java.nio.charset.StandardCharsets;
import java.time.Duration;
import java.util.Map;
import java.util.TreeMap;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.TimeUnit;

/**
 * A small HTTP service in the shape that the launcher expects: {@link #start} is the life of the
 * service, {@link #stop} and {@link #stopFast} ask it to end. The launcher calls each on a thread of
 * its own, start once and at most one of the other two.
 */
public final class HelloService {
    private static final int WORKERS = 4;
    private static final Duration SLOW_ANSWER = Duration.ofSeconds(2);
    private static final Duration GRACE = Duration.ofSeconds(10);

    /**
     * How long the running requests may still take; completed by the first stop request. A future,
     * so that a request that comes before the server is up is not lost.
     */
    private static final CompletableFuture<Duration> STOP_REQUEST = new CompletableFuture<>();

    private HelloService() {}

    /**
     * Serves requests until the service is asked to stop; when this method returns, the service ends.
     *
     * @param properties what the launcher tells: "daemon" and "quiet" (Boolean), "instance.root"
     *     (Path)
     * @param args the port (0 for any that is free) and the greeting
     */
    public static void start(Map<String, Object> properties, String[] args)
            throws IOException, InterruptedException {
        var settings = Settings.parse(args);
        var server = HttpServer.create(
                new InetSocketAddress(InetAddress.getLoopbackAddress(), settings.port()), 0);
        var workers = Executors.newFixedThreadPool(WORKERS);
        server.setExecutor(workers);
        server.createContext("/", exchange -> greet(exchange, settings.greeting()));
        server.createContext("/slow", exchange -> greetSlowly(exchange, settings.greeting()));
        server.start();

        System.out.println("Started with " + new TreeMap<>(properties));
        System.out.println("Listening on " + url(server.getAddress()));
        var grace = STOP_REQUEST.join();
        System.out.println("Stopping, " + grace.toSeconds() + " s for running requests");
        shutDown(server, workers, grace);
        System.out.println("Stopped");
    }

    /** Ends the service in order: requests that are being answered are answered to their end. */
    public static void stop(String[] args) {
        STOP_REQUEST.complete(GRACE);
    }

    /** Ends the service at once. */
    public static void stopFast(String[] args) {
        STOP_REQUEST.complete(Duration.ZERO);
    }

    /**
     * The order matters: HttpServer.stop() breaks the connections, so the workers finish first. From
     * their shutdown() on no new request is taken.
     */
    private static void shutDown(HttpServer server, ExecutorService workers, Duration grace)
            throws InterruptedException {
        workers.shutdown();
        workers.awaitTermination(grace.toMillis(), TimeUnit.MILLISECONDS);
        workers.shutdownNow();
        server.stop(0);
    }

    private static void greet(HttpExchange exchange, String greeting) throws IOException {
        try (exchange) {
            if (!exchange.getRequestMethod().equals("GET")) {
                exchange.getResponseHeaders().set("Allow", "GET");
                exchange.sendResponseHeaders(405, -1);
                return;
            }
            var body = (greeting + "\n").getBytes(StandardCharsets.UTF_8);
            exchange.getResponseHeaders().set("Content-Type", "text/plain; charset=utf-8");
            exchange.sendResponseHeaders(200, body.length);
            exchange.getResponseBody().write(body);
        }
    }

    /** Takes its time, to show what a stop does to a request that is being answered. */
    private static void greetSlowly(HttpExchange exchange, String greeting) throws IOException {
        try {
            Thread.sleep(SLOW_ANSWER.toMillis());
        } catch (InterruptedException e) {
            exchange.close(); // a fast stop: no answer
            return;
        }
        greet(exchange, greeting);
    }

    private static String url(InetSocketAddress address) {
        return "http://" + address.getAddress().getHostAddress() + ":" + address.getPort() + "/";
    }

    private record Settings(int port, String greeting) {
        /** Fails with what is wrong; the launcher reports it and ends with an exit status of 8. */
        static Settings parse(String[] args) {
            if (args.length != 2) {
                throw new IllegalArgumentException("Expected a port and a greeting");
            }
            return new Settings(Integer.parseInt(args[0]), args[1]);
        }
    }
}
