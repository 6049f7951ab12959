package halvorn.types;

/** A wave form. A program sets its attributes. */
public class Waveform extends Data {

    public Waveform() {
        super("WAVEFORM", "");
    }
}
