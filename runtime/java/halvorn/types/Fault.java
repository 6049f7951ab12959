package halvorn.types;

/**
 * The end of a run that is no exception of the program: a function that runs off its end without its
 * result, a node without a leg, a syscall that nobody serves. No handler of a TOLL module catches it.
 * Divisions by zero, subscripts beyond an array and null pointers end the run with the exceptions of
 * Java itself.
 */
public class Fault extends RuntimeException {

    private static final long serialVersionUID = 1L;

    public Fault(String reason) {
        super(reason);
    }
}
