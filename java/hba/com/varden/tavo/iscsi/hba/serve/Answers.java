package com.varden.tavo.iscsi.hba.serve;

import java.time.Duration;
import java.util.LinkedHashMap;
import java.util.Map;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.FutureTask;
import java.util.concurrent.RejectedExecutionException;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.TimeoutException;

/**
 * Answers for which an adapter is asked. Whoever asks the same within one interval gets the same answer, so that many
 * clients cost an adapter no more than one; what takes too long is answered when it is asked for again.
 */
final class Answers {
    private static final int MOST_KEPT = 64;
    /** Below what a request may take as a whole. */
    private static final long PATIENCE_SECONDS = 8;

    private final AdapterQueues queues = new AdapterQueues();
    private final Duration interval;
    private final Map<String, Answer> kept = new LinkedHashMap<>(MOST_KEPT, 0.75f, true) {
        private static final long serialVersionUID = 1;

        @Override
        protected boolean removeEldestEntry(Map.Entry<String, Answer> eldest) {
            return size() > MOST_KEPT && eldest.getValue().task.isDone();
        }
    };

    private static final class Answer {
        private final FutureTask<Reply> task;
        private volatile long done;

        Answer(Callable<Reply> work) {
            task = new FutureTask<>(() -> {
                try {
                    return work.call();
                } finally {
                    done = System.nanoTime();
                }
            });
        }

        boolean isUsable(Duration interval) {
            return !task.isDone() || System.nanoTime() - done < interval.toNanos();
        }
    }

    Answers(Duration interval) {
        this.interval = interval;
    }

    /** The answer to a question, which work finds out from an adapter. */
    Reply get(int dev, String question, Callable<Reply> work) {
        try {
            return find(dev, question, work).task.get(PATIENCE_SECONDS, TimeUnit.SECONDS);
        } catch (RejectedExecutionException e) {
            return Reply.text(Reply.BUSY, "too many requests wait for this adapter");
        } catch (TimeoutException e) {
            return Reply.text(Reply.TIMEOUT, "the adapter has not answered within " + PATIENCE_SECONDS + " seconds");
        } catch (ExecutionException e) {
            throw new IllegalStateException(e.getCause());
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
            return Reply.text(Reply.BUSY, "the server ends");
        }
    }

    private synchronized Answer find(int dev, String question, Callable<Reply> work) {
        Answer answer = kept.get(question);
        if (answer == null || !answer.isUsable(interval)) {
            answer = new Answer(work);
            queues.submit(dev, answer.task);
            kept.put(question, answer);
        }
        return answer;
    }
}
