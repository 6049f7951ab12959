package halvorn.types;

/** A conversion between quantities. A program sets its attributes. */
public class Converter extends Data {

    public Converter() {
        super("CONVERTER", "");
    }
}
