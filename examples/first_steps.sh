# What an image is, what can be done to it, and doing it.
omb info photo.jpg
omb list
omb apply photo.jpg small.png resize=50% 'kernel=unsharp 3x3'
omb histogram photo.jpg --channel gray
