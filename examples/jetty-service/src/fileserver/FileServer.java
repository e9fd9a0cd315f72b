package fileserver;

import java.io.IOException;
import java.net.InetAddress;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.Duration;
import java.util.Map;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.TimeoutException;
import javax.servlet.http.HttpServletRequest;
import javax.servlet.http.HttpServletResponse;
import org.eclipse.jetty.server.Handler;
import org.eclipse.jetty.server.Request;
import org.eclipse.jetty.server.Server;
import org.eclipse.jetty.server.ServerConnector;
import org.eclipse.jetty.server.handler.AbstractHandler;
import org.eclipse.jetty.server.handler.ContextHandler;
import org.eclipse.jetty.server.handler.ContextHandlerCollection;
import org.eclipse.jetty.server.handler.ResourceHandler;
import org.eclipse.jetty.server.handler.StatisticsHandler;

/**
 * Serves the files of a directory with Jetty, as a service in the shape that the launcher expects:
 * {@link #start} is its life, {@link #stop} and {@link #stopFast} ask it to end.
 */
public final class FileServer {
    private static final Duration GRACE = Duration.ofSeconds(10);

    /** How long running requests may still take; completed by the first stop request. */
    private static final CompletableFuture<Duration> STOP_REQUEST = new CompletableFuture<>();

    private FileServer() {}

    /**
     * Serves requests until the service is asked to stop.
     *
     * @param properties what the launcher tells; "instance.root" (Path) is the instance directory
     * @param args the port (0 for any that is free) and the directory of the files, which begins in
     *     the instance directory
     */
    public static void start(Map<String, Object> properties, String[] args) throws Exception {
        if (args.length != 2) throw new IllegalArgumentException("Expected a port and a directory");
        var directory = ((Path) properties.get("instance.root")).resolve(args[1]).toRealPath();
        if (!Files.isDirectory(directory)) {
            throw new IllegalArgumentException("Not a directory: " + directory);
        }
        var server = new Server();
        var connector = new ServerConnector(server);
        connector.setHost(InetAddress.getLoopbackAddress().getHostAddress());
        connector.setPort(Integer.parseInt(args[0]));
        server.addConnector(connector);
        server.setHandler(countedHandlers(directory));
        run(server, connector);
    }

    /** Ends the service in order: requests that are being answered are answered to their end. */
    public static void stop(String[] args) {
        STOP_REQUEST.complete(GRACE);
    }

    /** Ends the service at once. */
    public static void stopFast(String[] args) {
        STOP_REQUEST.complete(Duration.ZERO);
    }

    private static void run(Server server, ServerConnector connector) throws Exception {
        try {
            server.start();
            System.out.println("Listening on http://%s:%d/".formatted(
                    connector.getHost(), connector.getLocalPort()));
            server.setStopTimeout(STOP_REQUEST.join().toMillis());
        } finally {
            stop(server); // also one that did not start: its threads would keep the JVM alive
        }
    }

    private static void stop(Server server) throws Exception {
        try {
            server.stop();
        } catch (TimeoutException e) {
            System.err.println("Requests were broken off, after " + GRACE.toSeconds() + " s");
        }
    }

    /** At a stop Jetty waits for the requests that a StatisticsHandler counts, and no others. */
    private static Handler countedHandlers(Path directory) {
        var statistics = new StatisticsHandler();
        var contexts = new ContextHandlerCollection();
        contexts.addHandler(context("/status", new StatusPage(statistics)));
        contexts.addHandler(context("/", files(directory)));
        statistics.setHandler(contexts);
        return statistics;
    }

    private static ContextHandler context(String path, Handler handler) {
        var context = new ContextHandler(path);
        context.setAllowNullPathInfo(true); // answer "/status" itself, without a redirect
        context.setHandler(handler);
        return context;
    }

    private static Handler files(Path directory) {
        var files = new ResourceHandler();
        files.setResourceBase(directory.toUri().toString());
        files.setDirectoriesListed(true);
        return files;
    }

    private static final class StatusPage extends AbstractHandler {
        private final StatisticsHandler statistics;

        StatusPage(StatisticsHandler statistics) {
            this.statistics = statistics;
        }

        @Override
        public void handle(String target, Request baseRequest, HttpServletRequest request,
                HttpServletResponse response) throws IOException {
            baseRequest.setHandled(true);
            response.setContentType("text/plain; charset=utf-8");
            response.getWriter().printf(
                    "running for %d s%nrequests: %d, %d of them not yet answered%n",
                    statistics.getStatsOnMs() / 1000, statistics.getRequests(),
                    statistics.getRequestsActive());
        }
    }
}
